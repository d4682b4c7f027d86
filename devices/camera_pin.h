/// @file
/// The camera's output pin.
#pragma once

#include "devices/output_pin.h"

namespace devices {

/// "Output": interleaved DV of the camera's one system, and nothing else.
class camera_pin final : public output_pin {
public:
    camera_pin(base_filter& camera, const dv_system& system)
        : output_pin(camera, L"Output"), system_(system) {}

    const dv_system& system() const { return system_; }

private:
    bool accepts(const AM_MEDIA_TYPE& type) override {
        return media_type::interleaved_system(type) == &system_;
    }
    std::vector<media_type> offered() override { return {media_type::interleaved(system_)}; }
    size_t sample_bytes(const AM_MEDIA_TYPE&) const override { return system_.frame_bytes; }

    const dv_system& system_;
};

} // namespace devices
