/// @file
/// The stand-in for the system's DV splitter.
#pragma once

#include "devices/transform_filter.h"

namespace devices {

/// Takes interleaved DV at "Input" and hands the same frames on as DV pictures at "DV Vid Out", a pin that
/// exists while the input is connected. There is no pin for the sound.
class splitter final : public transform_filter {
public:
    /// The class of the system's own filter, in whose place it stands.
    static const CLSID clsid;

    splitter() : transform_filter(clsid, L"Input", L"DV Vid Out") {}

private:
    const dv_system* input_system(const AM_MEDIA_TYPE& type) const override;
    std::vector<media_type> output_types(const dv_system& system) const override;
    size_t transform(const dv_system& system, const AM_MEDIA_TYPE& out_type, const BYTE* in, size_t in_bytes,
                     BYTE* out, size_t out_bytes) override;
    bool output_comes_and_goes() const override { return true; }
};

} // namespace devices
