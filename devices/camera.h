/// @file
/// The simulated DV camera.
#pragma once

#include "devices/base_filter.h"
#include "devices/camera_config.h"
#include "devices/camera_feed.h"
#include "devices/camera_pin.h"

#include <memory>

namespace devices {

/// A live source that plays a raw .dv file over and over as a camera would send it, with declared faults.
/// While paused it shows nothing (VFW_S_CANT_CUE); frames are counted from 0 at every start from the stopped
/// state.
///
/// The configuration is read when the camera is made, and the stream is the one after the losses so far.
/// Without a usable stream the pin offers PAL and every
/// start fails with the reason that the file gives. While the device is lost, starting fails with
/// HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED); a loss is reported to the graph by EC_DEVICE_LOST.
class camera final : public base_filter {
public:
    static const CLSID clsid;
    /// The name it is registered under, without a number.
    static const wchar_t* const friendly_name;

    camera() : camera(camera_config::load(camera_config::location())) {}
    explicit camera(const camera_config& config);

    int pin_count() override { return 1; }
    base_pin* pin(int index) override { return index == 0 ? &output_ : nullptr; }

private:
    ~camera() override;

    HRESULT on_start() override;
    HRESULT on_run(REFERENCE_TIME start) override;
    void on_pause() override;
    HRESULT on_stop() override;
    HRESULT paused_result() const override { return VFW_S_CANT_CUE; }
    bool end_feed();
    HRESULT open_stream();

    const camera_config config_;
    const std::wstring stream_path_;
    std::shared_ptr<dv_stream> stream_;
    camera_pin output_;
    std::unique_ptr<camera_feed> feed_; // between start and stop; empty when the pin is not connected
};

} // namespace devices
