#include "devices/camera.h"

#include "devices/device_presence.h"

#include <new>

namespace devices {

namespace {

const uint64_t most_in_memory = uint64_t{512} << 20;
const DWORD patience_ms = 2000;

std::shared_ptr<dv_stream> opened(const std::wstring& path) {
    auto stream = std::make_shared<dv_stream>();
    if (!path.empty()) {
        stream->open(path);
    }
    return stream;
}

std::wstring current_stream(const camera_config& config) {
    device_presence::enter(config.scenario);
    return config.stream_after(device_presence::losses());
}

} // namespace

const CLSID camera::clsid = {0x3B4B0D33, 0xD763, 0x4A47, {0xAC, 0x4F, 0x15, 0x63, 0xA3, 0xA6, 0xF2, 0x93}};
const wchar_t* const camera::friendly_name = L"Simulated DV Camera";

camera::camera(const camera_config& config)
    : base_filter(clsid), config_(config), stream_path_(current_stream(config)),
      stream_(opened(stream_path_)),
      output_(*this, stream_->system() ? *stream_->system() : dv_system::pal_system()) {
    if (device_presence::losses() > 0) {
        Sleep(config.open_ms);
    }
}

camera::~camera() {
    if (!end_feed()) {
        feed_.release(); // its thread still runs in it; better lost than pulled from under it
    }
}

HRESULT camera::open_stream() {
    if (!stream_->system()) {
        const HRESULT result =
            stream_path_.empty() ? HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) : stream_->open(stream_path_);
        if (FAILED(result)) {
            return result;
        }
    }
    return stream_->system() == &output_.system() ? S_OK : VFW_E_INVALIDMEDIATYPE;
}

HRESULT camera::on_start() {
    if (!device_presence::present()) {
        return device_presence::lost_error;
    }
    if (feed_ && !end_feed()) {
        return VFW_E_TIMEOUT;
    }
    try {
        HRESULT result = open_stream();
        if (FAILED(result) || !output_.connected()) {
            return result;
        }
        stream_->load(most_in_memory);
        result = output_.commit();
        if (FAILED(result)) {
            return result;
        }
        feed_ = std::make_unique<camera_feed>(config_, stream_, output_.connection(), [this](bool present) {
            // As the system has it: the device's own filter, then 0 for gone and 1 for back.
            notify(EC_DEVICE_LOST, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this)),
                   present ? 1 : 0);
        });
        if (feed_->start()) {
            return S_OK;
        }
        feed_.reset();
        output_.decommit();
        return E_FAIL;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT camera::on_run(REFERENCE_TIME start) {
    if (!device_presence::present()) {
        return device_presence::lost_error;
    }
    if (feed_) {
        feed_->run(clock(), start);
    }
    return S_OK;
}

void camera::on_pause() {
    if (feed_) {
        feed_->pause();
    }
}

HRESULT camera::on_stop() {
    return end_feed() ? S_OK : VFW_E_TIMEOUT;
}

bool camera::end_feed() {
    if (!feed_) {
        return true;
    }
    feed_->ask_to_stop();
    output_.decommit();
    bool ended = feed_->ended(patience_ms);
    if (!ended && output_.connected()) {
        // Downstream holds the thread in a sample, which flushing has to end.
        output_.peer()->BeginFlush();
        ended = feed_->ended(patience_ms);
        output_.peer()->EndFlush();
    }
    if (ended) {
        feed_.reset();
    }
    return ended;
}

} // namespace devices
