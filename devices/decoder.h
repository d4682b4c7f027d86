/// @file
/// The stand-in for the system's DV video decoder.
#pragma once

#include "devices/dv_decoder.h"
#include "devices/transform_filter.h"

namespace devices {

/// Takes DV pictures at "XForm In" and hands pictures on at "XForm Out": RGB32 first, then RGB24, both bottom
/// line first, then YUY2 and UYVY.
class decoder final : public transform_filter {
public:
    /// The class of the system's own filter, in whose place it stands.
    static const CLSID clsid;

    decoder() : transform_filter(clsid, L"XForm In", L"XForm Out") {}

private:
    const dv_system* input_system(const AM_MEDIA_TYPE& type) const override;
    std::vector<media_type> output_types(const dv_system& system) const override;
    HRESULT on_start() override;
    size_t transform(const dv_system& system, const AM_MEDIA_TYPE& out_type, const BYTE* in, size_t in_bytes,
                     BYTE* out, size_t out_bytes) override;

    dv_decoder pictures_;
};

} // namespace devices
