#include "tests/support/foreign_pin.h"

#include <utility>

std::vector<Arrival> ForeignPin::arrivals() {
    const std::lock_guard lock(mutex_);
    return arrivals_;
}

size_t ForeignPin::count() {
    const std::lock_guard lock(mutex_);
    return arrivals_.size();
}

bool ForeignPin::shows(const std::vector<unsigned char>& bytes) {
    const std::lock_guard lock(mutex_);
    return !arrivals_.empty() && arrivals_.back().bytes == bytes;
}

STDMETHODIMP ForeignPin::QueryInterface(REFIID iid, void** out) {
    *out = nullptr;
    if (iid == IID_IUnknown || iid == IID_IPin) {
        *out = static_cast<IPin*>(this);
    } else if (iid == IID_IMemInputPin && direction_ == PINDIR_INPUT) {
        *out = static_cast<IMemInputPin*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP ForeignPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE*) {
    peer_ = vwin::com_<IPin>(pin);
    return S_OK;
}

STDMETHODIMP ForeignPin::Disconnect() {
    if (!peer_) {
        return S_FALSE;
    }
    peer_.clear();
    allocator_.clear();
    return S_OK;
}

STDMETHODIMP ForeignPin::ConnectedTo(IPin** out) {
    *out = vwin::com_<IPin>(peer_).detach();
    return *out ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP ForeignPin::QueryPinInfo(PIN_INFO* out) {
    *out = {};
    out->dir = direction_;
    return S_OK;
}

STDMETHODIMP ForeignPin::NotifyAllocator(IMemAllocator* allocator, BOOL) {
    allocator_ = vwin::com_<IMemAllocator>(allocator);
    return S_OK;
}

STDMETHODIMP ForeignPin::Receive(IMediaSample* sample) {
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

STDMETHODIMP ForeignPin::ReceiveMultiple(IMediaSample** samples, long count, long* taken) {
    for (*taken = 0; *taken < count; ++*taken) {
        const HRESULT result = Receive(samples[*taken]);
        if (result != S_OK) {
            return result;
        }
    }
    return S_OK;
}

vwin::com_<IPin> pinOf(IBaseFilter& filter, int index) {
    vwin::com_<IEnumPins> pins;
    filter.EnumPins(pins.put());
    vwin::com_<IPin> pin;
    for (int i = 0; i <= index; ++i) {
        ULONG fetched = 0;
        if (pins->Next(1, pin.put(), &fetched) != S_OK) {
            return {};
        }
    }
    return pin;
}

vwin::com_<IReferenceClock> systemClock() {
    static IReferenceClock* const shared = [] {
        IReferenceClock* clock = nullptr;
        CoInitializeEx(nullptr, COINIT_MULTITHREADED); // never undone, lest the clock's module be unloaded
        CoCreateInstance(CLSID_SystemClock, nullptr, CLSCTX_INPROC_SERVER, IID_IReferenceClock,
                         reinterpret_cast<void**>(&clock));
        return clock;
    }();
    return vwin::com_<IReferenceClock>(shared);
}
