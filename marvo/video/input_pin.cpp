#include "marvo/video/input_pin.h"

#include "marvo/core/guarded.h"
#include "marvo/core/timed_guard.h"

#include <utility>

namespace vvideo {

dvInputPin::dvInputPin(IBaseFilter* filter, const wchar_t* name, int)
    : PinBase(filter, name, PINDIR_INPUT), sinkLock_(1, 1) {}

dvInputPin::~dvInputPin() {
    if (allocator_) {
        allocator_->Release();
    }
}

void dvInputPin::registerSink(dvSink* sink) {
    vcore::timed_guard guard(sinkLock_, INFINITE);
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
    return PinBase::QueryInterface(id, out);
}

ULONG STDMETHODCALLTYPE dvInputPin::AddRef() {
    if (filter()) {
        filter()->AddRef();
    }
    return PinBase::AddRef();
}

// The filter last: it may go with its last reference, and this pin with it.
ULONG STDMETHODCALLTYPE dvInputPin::Release() {
    IBaseFilter* const owner = filter();
    const ULONG left = PinBase::Release();
    if (owner) {
        owner->Release();
    }
    return left;
}

/// Calls the sink, if there is one. An exception of its does not go on to whoever called the pin.
template <class Call>
HRESULT dvInputPin::tellSink(Call call) {
    dvSink* const sink = sink_;
    return !sink || vcore::guarded([&] { call(*sink); }) ? S_OK : E_OUTOFMEMORY;
}

bool dvInputPin::accepts(const AM_MEDIA_TYPE* mt) {
    dvMediaType type(mt);
    dvSink* const sink = sink_;
    return sink && vcore::guarded(false, [&] { return sink->acceptFormat(this, type); });
}

void dvInputPin::takeConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    mediaType() = mt;
    setPeer(pin, !isOwn(pin));
    tellSink([this](dvSink& sink) { sink.notifyConnect(this); });
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
    if (!peerReferenced()) {
        AddRef();
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::Disconnect() {
    if (!connected()) {
        return S_FALSE;
    }
    dropAllocator();
    IPin* const peer = takePeer();
    tellSink([this](dvSink& sink) { sink.notifyDisconnect(this); });
    peer->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvInputPin::QueryId(LPWSTR* id) {
    if (!id) {
        return E_POINTER;
    }
    *id = static_cast<LPWSTR>(CoTaskMemAlloc(MAX_PIN_NAME * sizeof(wchar_t)));
    if (!*id) {
        return E_OUTOFMEMORY;
    }
    lstrcpynW(*id, name(), MAX_PIN_NAME);
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
    return tellSink([this](dvSink& sink) { sink.notifyComplete(this); });
}

HRESULT STDMETHODCALLTYPE dvInputPin::GetAllocator(IMemAllocator** allocator) {
    if (!allocator) {
        return E_POINTER;
    }
    if (!allocator_) {
        return VFW_E_NO_ALLOCATOR;
    }
    if (peerReferenced()) {
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
    if (allocator && connected()) {
        allocator->AddRef();
    }
    dropAllocator();
    allocator_ = allocator;
    allocatorReferenced_ = connected();
    return tellSink([this](dvSink& sink) { sink.notifyAllocator(this); });
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
    const bool house = !peerReferenced();
    const HRESULT result = tellSink([this, sample](dvSink& sink) { sink.receive(this, sample); });
    if (house && sample) {
        sample->Release();
    }
    return result;
}

HRESULT STDMETHODCALLTYPE dvInputPin::ReceiveMultiple(IMediaSample** samples, long n, long* done) {
    if (done) {
        *done = 0;
    }
    if (!samples) {
        return E_POINTER;
    }
    const bool house = !peerReferenced();
    vcore::timed_guard guard(sinkLock_, INFINITE);
    dvSink* const sink = sink_;
    for (long i = 0; i < n; ++i) {
        if (sink && vcore::guarded(false, [&] { return sink->receive(this, samples[i]); })) {
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
