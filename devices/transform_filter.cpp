#include "devices/transform_filter.h"

#include <algorithm>

namespace devices {

namespace {

/// How long stopping waits for a neighbour that does not come back from a sample.
const DWORD patience_ms = 5000;

} // namespace

transform_filter::transform_filter(const CLSID& clsid, const wchar_t* input_name, const wchar_t* output_name)
    : base_filter(clsid), input_(*this, input_name), output_(*this, output_name) {}

base_pin* transform_filter::pin(int index) {
    if (index == 0) {
        return &input_;
    }
    return index == 1 && output_visible() ? &output_ : nullptr;
}

HRESULT transform_filter::on_start() {
    const HRESULT result = output_.commit();
    if (FAILED(result)) {
        return result;
    }
    guard held(stream_);
    streaming_ = true;
    flushing_ = false;
    return S_OK;
}

HRESULT transform_filter::on_stop() {
    {
        guard held(stream_);
        streaming_ = false;
    }
    // Both ends: this filter's thread may wait for an output buffer, the upstream filter's for an input
    // buffer.
    input_.decommit();
    output_.decommit();
    return wait_until_idle(patience_ms) ? S_OK : VFW_E_TIMEOUT;
}

void transform_filter::input_connected() {
    if (output_comes_and_goes()) {
        pins_changed();
    }
}

void transform_filter::input_disconnecting() {
    // Without its input the output has no type: the connection beyond goes too.
    if (const com_ref<IPin> peer{output_.peer()}) {
        peer->Disconnect();
        output_.Disconnect();
    }
    if (output_comes_and_goes()) {
        pins_changed();
    }
}

HRESULT transform_filter::receive(IMediaSample* sample) {
    if (!sample) {
        return E_POINTER;
    }
    const com_ref<IMediaSample> kept(sample);
    output_pin::link link;
    {
        guard held(stream_);
        while (busy_) {
            stream_.wait(idle_, INFINITE);
        }
        if (!streaming_) {
            return VFW_E_WRONG_STATE;
        }
        if (flushing_) {
            return S_FALSE;
        }
        link = output_.connection();
        busy_ = true;
    }
    const HRESULT result = link.transport ? pass_on(sample, link) : S_OK;
    guard held(stream_);
    busy_ = false;
    WakeAllConditionVariable(&idle_);
    return result;
}

HRESULT transform_filter::pass_on(IMediaSample* in, const output_pin::link& link) {
    const dv_system* system = input_system(input_.type().get());
    const AM_MEDIA_TYPE& out_type = output_.type().get();
    BYTE* from = nullptr;
    HRESULT result = in->GetPointer(&from);
    if (FAILED(result)) {
        return result;
    }
    const long held_bytes = std::clamp(in->GetActualDataLength(), 0L, std::max(in->GetSize(), 0L));
    const size_t in_bytes = std::min(static_cast<size_t>(held_bytes), system->frame_bytes);

    com_ref<IMediaSample> out;
    result = link.allocator->GetBuffer(out.put(), nullptr, nullptr, 0);
    if (FAILED(result)) {
        return result;
    }
    BYTE* to = nullptr;
    result = out->GetPointer(&to);
    if (FAILED(result)) {
        return result;
    }
    const size_t out_bytes = out_type.lSampleSize;
    if (out->GetSize() < static_cast<long>(out_bytes)) {
        return VFW_E_BUFFER_OVERFLOW;
    }
    out->SetActualDataLength(static_cast<long>(transform(*system, out_type, from, in_bytes, to, out_bytes)));

    REFERENCE_TIME start, end;
    result = in->GetTime(&start, &end);
    out->SetTime(SUCCEEDED(result) ? &start : nullptr, result == S_OK ? &end : nullptr);
    const bool has_media_time = SUCCEEDED(in->GetMediaTime(&start, &end));
    out->SetMediaTime(has_media_time ? &start : nullptr, has_media_time ? &end : nullptr);
    out->SetSyncPoint(TRUE);
    out->SetPreroll(in->IsPreroll() == S_OK);
    out->SetDiscontinuity(in->IsDiscontinuity() == S_OK);
    return link.transport->Receive(out.get());
}

bool transform_filter::wait_until_idle(DWORD ms) {
    const ULONGLONG end = GetTickCount64() + ms;
    guard held(stream_);
    while (busy_) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return false;
        }
        stream_.wait(idle_, static_cast<DWORD>(end - now));
    }
    return true;
}

void transform_filter::set_flushing(bool flushing) {
    guard held(stream_);
    flushing_ = flushing;
}

com_ref<IPin> transform_filter::output_peer() {
    guard held(control());
    return com_ref<IPin>(output_.peer());
}

HRESULT transform_filter::sink_pin::EndOfStream() {
    const com_ref<IPin> peer = filter_.output_peer();
    return peer ? peer->EndOfStream() : S_OK;
}

HRESULT transform_filter::sink_pin::BeginFlush() {
    filter_.set_flushing(true);
    const com_ref<IPin> peer = filter_.output_peer();
    return peer ? peer->BeginFlush() : S_OK;
}

HRESULT transform_filter::sink_pin::EndFlush() {
    filter_.wait_until_idle(patience_ms);
    const com_ref<IPin> peer = filter_.output_peer();
    const HRESULT result = peer ? peer->EndFlush() : S_OK;
    filter_.set_flushing(false);
    return result;
}

HRESULT transform_filter::sink_pin::NewSegment(REFERENCE_TIME from, REFERENCE_TIME to, double rate) {
    const com_ref<IPin> peer = filter_.output_peer();
    return peer ? peer->NewSegment(from, to, rate) : S_OK;
}

void transform_filter::sink_pin::on_disconnect() {
    filter_.input_disconnecting();
    input_pin::on_disconnect();
}

bool transform_filter::source_pin::accepts(const AM_MEDIA_TYPE& type) {
    for (const media_type& mine : offered()) {
        if (mine.fits(type) && type.subtype == mine.get().subtype) {
            return true;
        }
    }
    return false;
}

std::vector<media_type> transform_filter::source_pin::offered() {
    const dv_system* system =
        filter_.input_.connected() ? filter_.input_system(filter_.input_.type().get()) : nullptr;
    return system ? filter_.output_types(*system) : std::vector<media_type>{};
}

} // namespace devices
