#pragma once

#include "marvo.h"

#include <mutex>
#include <vector>

/// What arrived in one sample, as a test looks at it.
struct Arrival {
    std::vector<unsigned char> bytes;
    ULONGLONG time_ms = 0;
    bool hasTime = false;
    bool discontinuity = false;
    bool syncPoint = false;
    long long mediaStart = -1;
    long long mediaStop = -1;
};

/// A foreign input pin: keeps to plain COM rules and notes every sample. Lives on the stack of a test, which
/// checks at its end that all references have come back.
class ForeignPin : public IPin, public IMemInputPin {
public:
    std::vector<Arrival> arrivals() {
        const std::lock_guard lock(mutex_);
        return arrivals_;
    }
    size_t count() {
        const std::lock_guard lock(mutex_);
        return arrivals_.size();
    }
    /// Whether the newest sample holds these bytes.
    bool shows(const std::vector<unsigned char>& bytes) {
        const std::lock_guard lock(mutex_);
        return !arrivals_.empty() && arrivals_.back().bytes == bytes;
    }
    long references() const { return references_; }
    IPin* peer() const { return peer_; }
    bool keepBytes = true;

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        if (iid == IID_IUnknown || iid == IID_IPin) {
            *out = static_cast<IPin*>(this);
        } else if (iid == IID_IMemInputPin) {
            *out = static_cast<IMemInputPin*>(this);
        } else {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&references_); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&references_); }

    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE*) override {
        peer_ = pin;
        peer_->AddRef();
        return S_OK;
    }
    STDMETHODIMP Disconnect() override {
        if (!peer_) {
            return S_FALSE;
        }
        peer_->Release();
        peer_ = nullptr;
        if (allocator_) {
            allocator_->Release();
        }
        allocator_ = nullptr;
        return S_OK;
    }
    STDMETHODIMP ConnectedTo(IPin** out) override {
        *out = peer_;
        if (!peer_) {
            return VFW_E_NOT_CONNECTED;
        }
        peer_->AddRef();
        return S_OK;
    }
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryPinInfo(PIN_INFO*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* out) override {
        *out = PINDIR_INPUT;
        return S_OK;
    }
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return S_OK; }
    STDMETHODIMP BeginFlush() override { return S_OK; }
    STDMETHODIMP EndFlush() override { return S_OK; }
    STDMETHODIMP NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) override { return S_OK; }

    STDMETHODIMP GetAllocator(IMemAllocator**) override { return VFW_E_NO_ALLOCATOR; }
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL) override {
        allocator_ = allocator;
        if (allocator_) {
            allocator_->AddRef();
        }
        return S_OK;
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Receive(IMediaSample* sample) override {
        Arrival arrival;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        if (keepBytes) {
            arrival.bytes.assign(data, data + sample->GetActualDataLength());
        }
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        arrival.time_ms = GetTickCount64();
        arrival.hasTime = sample->GetTime(&start, &stop) == S_OK;
        arrival.discontinuity = sample->IsDiscontinuity() == S_OK;
        arrival.syncPoint = sample->IsSyncPoint() == S_OK;
        sample->GetMediaTime(&arrival.mediaStart, &arrival.mediaStop);
        const std::lock_guard lock(mutex_);
        arrivals_.push_back(std::move(arrival));
        return S_OK;
    }
    STDMETHODIMP ReceiveMultiple(IMediaSample**, long, long*) override { return E_NOTIMPL; }
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

private:
    volatile long references_ = 1;
    IPin* peer_ = nullptr;
    IMemAllocator* allocator_ = nullptr;
    std::mutex mutex_;
    std::vector<Arrival> arrivals_;
};

/// The pin of a filter by its place in the enumeration, with a reference for the caller.
inline IPin* pinOf(IBaseFilter& filter, int index) {
    IEnumPins* pins = nullptr;
    filter.EnumPins(&pins);
    IPin* pin = nullptr;
    ULONG fetched = 0;
    for (int i = 0; i <= index; ++i) {
        if (pin) {
            pin->Release();
        }
        pin = nullptr;
        pins->Next(1, &pin, &fetched);
    }
    pins->Release();
    return pin;
}

/// The system's reference clock, with a reference for the caller. It is one for all tests and is never given
/// up: Wine's clock, when it goes, waits for a thread of its own, and that thread misses the request to end,
/// and sleeps for ever, when it comes before its first sleep, as it does on a busy machine.
inline IReferenceClock* systemClock() {
    static IReferenceClock* const shared = [] {
        IReferenceClock* clock = nullptr;
        CoInitializeEx(nullptr, COINIT_MULTITHREADED); // never undone, lest the clock's module be unloaded
        CoCreateInstance(CLSID_SystemClock, nullptr, CLSCTX_INPROC_SERVER, IID_IReferenceClock,
                         reinterpret_cast<void**>(&clock));
        return clock;
    }();
    if (shared) {
        shared->AddRef();
    }
    return shared;
}
