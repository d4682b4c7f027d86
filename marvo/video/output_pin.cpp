#include "marvo/video/output_pin.h"

#include "marvo/core/winthread.h"

#include <utility>

namespace vvideo {

/// The transport for one call.
struct dvOutputPin::transport {
    IMemInputPin* pin = nullptr;
    bool own = false;
    reference<IMemInputPin> kept; // of a foreign one
};

dvOutputPin::dvOutputPin(IBaseFilter* filter, const wchar_t* name) : filter_(filter) {
    copyPinName(name_, name);
}

dvOutputPin::~dvOutputPin() {
    if (peerReferenced_) {
        peer_->Release();
    }
}

// The copy comes first: `by` may be a view of the type that is replaced.
void dvOutputPin::replaceType(dvMediaType& type, const AM_MEDIA_TYPE* by) {
    if (by) {
        type = dvMediaType(by);
    }
}

void dvOutputPin::setMem(IMemAllocator* allocator) {
    void* queried = nullptr;
    if (allocator && FAILED(allocator->QueryInterface(IID_IMemAllocator, &queried))) {
        queried = nullptr;
    }
    allocator_.adopt(static_cast<IMemAllocator*>(queried));
}

void dvOutputPin::Run() {
    if (filter_) {
        filter_->Run(0);
    }
}

dvOutputPin::transport dvOutputPin::useTransport() const {
    // A worker killed while it holds the lock would leave it held for ever.
    const vwin::winthread::uninterruptible region;
    const vcore::spin_guard guard(transportLock_);
    transport used{transport_.get(), transport_ && transportIsOwn_, {}};
    // Own pins count plainly, so they are not touched once per sample; they live as long as their filters.
    if (!used.own) {
        used.kept = transport_;
    }
    return used;
}

void dvOutputPin::setTransport(reference<IMemInputPin> next, bool own) {
    const vcore::spin_guard guard(transportLock_);
    std::swap(transport_, next);
    transportIsOwn_ = own;
}

bool dvOutputPin::deliver(IMediaSample* sample) {
    const transport to = useTransport();
    if (!sample) {
        return !to.pin;
    }
    // An own peer uses a reference up, so it gets one of its own.
    if (to.own) {
        sample->AddRef();
    }
    const bool taken = send(to, sample);
    if (to.own && !taken) {
        sample->Release();
    }
    return taken;
}

bool dvOutputPin::sendSample(IMediaSample* sample) {
    const transport to = useTransport();
    if (!sample) {
        return !to.pin;
    }
    const bool taken = send(to, sample);
    if (!to.pin || !taken) {
        sample->Release();
    }
    return taken;
}

bool dvOutputPin::send(const transport& to, IMediaSample* sample) {
    if (!to.pin) {
        return true;
    }
    if (to.own) {
        return SUCCEEDED(to.pin->Receive(sample));
    }
    const vwin::winthread::killable foreignCall;
    return SUCCEEDED(to.pin->Receive(sample));
}

void dvOutputPin::sendSamples(IMediaSample** samples, long n) {
    const transport to = useTransport();
    if (!samples) {
        return;
    }
    if (to.pin) {
        try {
            long done = 0;
            to.pin->ReceiveMultiple(samples, n, &done);
        } catch (...) {
            // A receiver's fault must not stop the sender.
        }
        return;
    }
    for (long i = 0; i < n; ++i) {
        if (samples[i]) {
            samples[i]->Release();
        }
    }
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryInterface(REFIID id, void** out) {
    const bool pin = id == IID_IPin || id == IID_IUnknown || id == IID_dvOwnPin;
    return answer(pin ? static_cast<IPin*>(this) : nullptr, out);
}

HRESULT dvOutputPin::checkUnconnected(IPin* pin) const {
    if (peer_) {
        return VFW_E_ALREADY_CONNECTED;
    }
    return pin ? S_OK : E_POINTER;
}

void dvOutputPin::setPeer(IPin* pin, bool own, bool referenced) {
    if (referenced) {
        pin->AddRef();
    }
    peer_ = pin;
    peerReferenced_ = referenced;
    void* queried = nullptr;
    if (FAILED(pin->QueryInterface(IID_IMemInputPin, &queried))) {
        return;
    }
    reference<IMemInputPin> next;
    next.adopt(static_cast<IMemInputPin*>(queried));
    setTransport(std::move(next), own);
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = checkUnconnected(receiver); free != S_OK) {
        return free;
    }
    // For the time of the call, and with an own peer until that is disconnected and releases it.
    AddRef();
    const bool own = isOwnPin(receiver);
    const bool mutual = (mt && SUCCEEDED(receiver->ReceiveConnection(this, mt))) ||
                        SUCCEEDED(receiver->ReceiveConnection(this, type_));
    if (!mutual && receiver->QueryAccept(type_) != S_OK) {
        Release();
        return S_FALSE;
    }
    // An own peer that was really connected has taken a reference on itself; `Disconnect` releases that one.
    // Any other peer is referenced here, and releases nothing of this pin's that it has not taken.
    const bool houseRules = own && mutual;
    setPeer(receiver, own, !houseRules);
    if (!houseRules) {
        Release();
    }
    if (transport_) {
        transport_->NotifyAllocator(allocator_.get(), FALSE);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = checkUnconnected(pin); free != S_OK) {
        return free;
    }
    setType(mt);
    const bool own = isOwnPin(pin);
    setPeer(pin, own, !own);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Disconnect() {
    if (!peer_) {
        return S_FALSE;
    }
    setTransport({}, false);
    peerReferenced_ = false;
    std::exchange(peer_, nullptr)->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ConnectedTo(IPin** pin) {
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

HRESULT STDMETHODCALLTYPE dvOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* mt) {
    if (!mt) {
        return E_POINTER;
    }
    copyMediaType(*mt, type_);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryPinInfo(PIN_INFO* info) {
    return fillPinInfo(info, filter_, PINDIR_OUTPUT, name_);
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) {
        return E_POINTER;
    }
    *direction = PINDIR_OUTPUT;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryId(LPWSTR* id) {
    if (!id || !*id) {
        return E_POINTER;
    }
    lstrcpynW(*id, name_, MAX_PIN_NAME);
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
