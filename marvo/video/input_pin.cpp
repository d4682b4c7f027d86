#include "marvo/video/input_pin.h"

#include "marvo/core/timed_guard.h"

#include <utility>

namespace vvideo {

dvInputPin::dvInputPin(IBaseFilter* filter, const wchar_t* name, int) : lock_(1, 1), filter_(filter) {
    copyPinName(name_, name);
}

dvInputPin::~dvInputPin() {
    if (allocator_) {
        allocator_->Release();
    }
    if (isForeign()) {
        peer_->Release();
    }
}

void dvInputPin::registerSink(dvSink* sink) {
    vcore::timed_guard guard(lock_, INFINITE);
    sink_ = sink;
}

void dvInputPin::unregisterSink() {
    registerSink(nullptr);
}

void dvInputPin::addType(dvMediaType& type) {
    types_.setType(type);
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryInterface(REFIID id, void** out) {
    if (id == IID_IMemInputPin) {
        return answer(static_cast<IMemInputPin*>(this), out);
    }
    const bool pin = id == IID_IPin || id == IID_IUnknown || id == IID_dvOwnPin;
    return answer(pin ? static_cast<IPin*>(this) : nullptr, out);
}

ULONG STDMETHODCALLTYPE dvInputPin::AddRef() {
    if (filter_) {
        filter_->AddRef();
    }
    return dvObj<IPin>::AddRef();
}

// The filter last: it may go with its last reference, and this pin with it.
ULONG STDMETHODCALLTYPE dvInputPin::Release() {
    IBaseFilter* const filter = filter_;
    const ULONG left = dvObj<IPin>::Release();
    if (filter) {
        filter->Release();
    }
    return left;
}

HRESULT dvInputPin::checkUnconnected(IPin* pin) const {
    if (peer_) {
        return VFW_E_ALREADY_CONNECTED;
    }
    return pin ? S_OK : E_POINTER;
}

bool dvInputPin::accepts(const AM_MEDIA_TYPE* mt) {
    dvMediaType type(mt);
    dvSink* const sink = sink_;
    return sink && sink->acceptFormat(this, type);
}

void dvInputPin::takeConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    type_ = mt;
    peer_ = pin;
    house_ = isOwnPin(pin);
    if (isForeign()) {
        pin->AddRef();
    }
    if (dvSink* const sink = sink_) {
        sink->notifyConnect(this);
    }
}

HRESULT STDMETHODCALLTYPE dvInputPin::Connect(IPin* pin, const AM_MEDIA_TYPE* mt) {
    const HRESULT free = checkUnconnected(pin);
    if (free == S_OK) {
        takeConnection(pin, mt);
    }
    return free;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = checkUnconnected(pin); free != S_OK) {
        return free;
    }
    if (!accepts(mt)) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }
    takeConnection(pin, mt);
    // An own output pin keeps this one without a reference and releases it when it is disconnected. This is
    // the reference that it releases; a cycle of connecting and disconnecting both leaves the count as it
    // was.
    if (house_) {
        AddRef();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::Disconnect() {
    if (!peer_) {
        return S_FALSE;
    }
    dropAllocator();
    house_ = true;
    IPin* const peer = std::exchange(peer_, nullptr);
    if (dvSink* const sink = sink_) {
        sink->notifyDisconnect(this);
    }
    peer->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ConnectedTo(IPin** pin) {
    if (!peer_) {
        return VFW_E_NOT_CONNECTED;
    }
    if (!pin) {
        return E_POINTER;
    }
    peer_->AddRef();
    *pin = peer_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ConnectionMediaType(AM_MEDIA_TYPE* mt) {
    if (!mt) {
        return E_POINTER;
    }
    copyMediaType(*mt, type_);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryPinInfo(PIN_INFO* info) {
    return fillPinInfo(info, filter_, PINDIR_INPUT, name_);
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) {
        return E_POINTER;
    }
    *direction = PINDIR_INPUT;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryId(LPWSTR* id) {
    if (!id) {
        return E_POINTER;
    }
    *id = static_cast<LPWSTR>(CoTaskMemAlloc(sizeof(name_)));
    if (!*id) {
        return E_OUTOFMEMORY;
    }
    lstrcpynW(*id, name_, MAX_PIN_NAME);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryAccept(const AM_MEDIA_TYPE* mt) {
    return accepts(mt) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EnumMediaTypes(IEnumMediaTypes** out) {
    if (!out) {
        return E_POINTER;
    }
    types_.AddRef();
    *out = &types_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryInternalConnections(IPin**, ULONG* n) {
    if (!n) {
        return E_POINTER;
    }
    *n = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EndOfStream() {
    if (dvSink* const sink = sink_) {
        sink->notifyComplete(this);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::BeginFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::EndFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::GetAllocator(IMemAllocator** allocator) {
    if (!allocator) {
        return E_POINTER;
    }
    if (!allocator_) {
        return VFW_E_NO_ALLOCATOR;
    }
    if (isForeign()) {
        allocator_->AddRef();
    }
    *allocator = allocator_;
    return S_OK;
}

void dvInputPin::dropAllocator() {
    IMemAllocator* const allocator = std::exchange(allocator_, nullptr);
    if (allocator && allocatorReferenced_) {
        allocator->Release();
    }
}

HRESULT STDMETHODCALLTYPE dvInputPin::NotifyAllocator(IMemAllocator* allocator, BOOL) {
    const bool connected = peer_ != nullptr;
    if (allocator && connected) {
        allocator->AddRef();
    }
    dropAllocator();
    allocator_ = allocator;
    allocatorReferenced_ = connected;
    if (dvSink* const sink = sink_) {
        sink->notifyAllocator(this);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    if (!properties) {
        return E_POINTER;
    }
    if (allocator_) {
        allocator_->GetProperties(properties);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::Receive(IMediaSample* sample) {
    const bool house = house_;
    if (dvSink* const sink = sink_) {
        sink->receive(this, sample);
    }
    if (house && sample) {
        sample->Release();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveMultiple(IMediaSample** samples, long n, long* done) {
    if (done) {
        *done = 0;
    }
    if (!samples) {
        return E_POINTER;
    }
    const bool house = house_;
    vcore::timed_guard guard(lock_, INFINITE);
    dvSink* const sink = sink_;
    for (long i = 0; i < n; ++i) {
        if (sink && sink->receive(this, samples[i])) {
            if (done) {
                ++*done;
            }
        } else if (house && samples[i]) {
            samples[i]->Release();
        }
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveCanBlock() {
    return S_FALSE;
}

} // namespace vvideo
