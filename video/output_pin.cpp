#include "video/output_pin.h"

#include "core/winthread.h"

#include <utility>

namespace vvideo {

/// The transport for one call.
struct dvOutputPin::transport {
    IMemInputPin* pin = nullptr;
    bool own = false;
    reference<IMemInputPin> kept; // of a foreign one
};

dvOutputPin::dvOutputPin(IBaseFilter* filter, const wchar_t* name) : _filter(filter) {
    copyPinName(_name, name);
}

dvOutputPin::~dvOutputPin() {
    if (_peerReferenced)
        _peer->Release();
}

// The copy comes first: `by` may be a view of the type that is replaced.
void dvOutputPin::_replace(dvMediaType& type, const AM_MEDIA_TYPE* by) {
    if (by)
        type = dvMediaType(by);
}

void dvOutputPin::setMem(IMemAllocator* allocator) {
    void* queried = nullptr;
    if (allocator && FAILED(allocator->QueryInterface(IID_IMemAllocator, &queried)))
        queried = nullptr;
    _allocator.adopt(static_cast<IMemAllocator*>(queried));
}

void dvOutputPin::Run() {
    if (_filter)
        _filter->Run(0);
}

dvOutputPin::transport dvOutputPin::_useTransport() const {
    // A worker killed while it holds the lock would leave it held for ever.
    const vwin::winthread::uninterruptible region;
    const vcore::spin_guard guard(_transportLock);
    transport used{_transport.get(), _transport && _transportIsOwn, {}};
    // Own pins count plainly, so they are not touched once per sample; they live as long as their filters.
    if (!used.own)
        used.kept = _transport;
    return used;
}

void dvOutputPin::_setTransport(reference<IMemInputPin> next, bool own) {
    const vcore::spin_guard guard(_transportLock);
    std::swap(_transport, next);
    _transportIsOwn = own;
}

bool dvOutputPin::deliver(IMediaSample* sample) {
    if (sample)
        sample->AddRef();
    return sendSample(sample);
}

bool dvOutputPin::sendSample(IMediaSample* sample) {
    const transport to = _useTransport();
    if (!sample)
        return !to.pin;
    HRESULT result = S_OK;
    if (to.own) {
        result = to.pin->Receive(sample);
        if (SUCCEEDED(result))
            return true;
    } else if (to.pin) {
        const vwin::winthread::killable foreignCall;
        result = to.pin->Receive(sample);
    }
    sample->Release();
    return SUCCEEDED(result);
}

void dvOutputPin::sendSamples(IMediaSample** samples, long n) {
    const transport to = _useTransport();
    if (!samples)
        return;
    if (to.pin) {
        try {
            long done = 0;
            to.pin->ReceiveMultiple(samples, n, &done);
        } catch (...) {
            // A receiver's fault must not stop the sender.
        }
    }
    if (to.own)
        return;
    for (long i = 0; i < n; ++i)
        if (samples[i])
            samples[i]->Release();
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryInterface(REFIID id, void** out) {
    const bool pin = id == IID_IPin || id == IID_IUnknown || id == IID_dvOwnPin;
    return answer(pin ? static_cast<IPin*>(this) : nullptr, out);
}

HRESULT dvOutputPin::_checkUnconnected(IPin* pin) const {
    if (_peer)
        return VFW_E_ALREADY_CONNECTED;
    return pin ? S_OK : E_POINTER;
}

void dvOutputPin::_setPeer(IPin* pin, bool own, bool referenced) {
    if (referenced)
        pin->AddRef();
    _peer = pin;
    _peerReferenced = referenced;
    void* queried = nullptr;
    if (FAILED(pin->QueryInterface(IID_IMemInputPin, &queried)))
        return;
    reference<IMemInputPin> next;
    next.adopt(static_cast<IMemInputPin*>(queried));
    _setTransport(std::move(next), own);
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = _checkUnconnected(receiver); free != S_OK)
        return free;
    // For the time of the call, and with an own peer until that is disconnected and releases it.
    AddRef();
    const bool own = isOwnPin(receiver);
    const bool mutual = (mt && SUCCEEDED(receiver->ReceiveConnection(this, mt))) ||
                        SUCCEEDED(receiver->ReceiveConnection(this, _type));
    if (!mutual && receiver->QueryAccept(_type) != S_OK) {
        Release();
        return S_FALSE;
    }
    // An own peer that was really connected has taken a reference on itself; `Disconnect` releases that one.
    // Any other peer is referenced here, and releases nothing of this pin's that it has not taken.
    const bool houseRules = own && mutual;
    _setPeer(receiver, own, !houseRules);
    if (!houseRules)
        Release();
    if (_transport)
        _transport->NotifyAllocator(_allocator.get(), FALSE);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = _checkUnconnected(pin); free != S_OK)
        return free;
    setType(mt);
    const bool own = isOwnPin(pin);
    _setPeer(pin, own, !own);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Disconnect() {
    if (!_peer)
        return S_FALSE;
    _setTransport({}, false);
    _peerReferenced = false;
    std::exchange(_peer, nullptr)->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ConnectedTo(IPin** pin) {
    if (!_peer)
        return VFW_E_NOT_CONNECTED;
    if (!pin)
        return E_POINTER;
    _peer->AddRef();
    *pin = _peer;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* mt) {
    if (!mt)
        return E_POINTER;
    copyMediaType(*mt, _type);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryPinInfo(PIN_INFO* info) {
    return fillPinInfo(info, _filter, PINDIR_OUTPUT, _name);
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction)
        return E_POINTER;
    *direction = PINDIR_OUTPUT;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryId(LPWSTR* id) {
    if (!id || !*id)
        return E_POINTER;
    lstrcpynW(*id, _name, MAX_PIN_NAME);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryAccept(const AM_MEDIA_TYPE*) {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::EnumMediaTypes(IEnumMediaTypes**) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::EndOfStream() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::BeginFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::EndFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

} // namespace vvideo
