#include "marvo/video/output_pin.h"

#include "marvo/core/winthread.h"

#include <utility>

namespace vvideo {

/// The transport for one call.
struct dvOutputPin::Transport {
    IMemInputPin* pin = nullptr;
    bool own = false;
    Reference<IMemInputPin> kept; // of a foreign one
};

dvOutputPin::dvOutputPin(IBaseFilter* filter, const wchar_t* name) : PinBase(filter, name, PINDIR_OUTPUT) {}

dvOutputPin::~dvOutputPin() = default;

void dvOutputPin::setType(const AM_MEDIA_TYPE* type) {
    replaceType(mediaType(), type);
}

void dvOutputPin::setType2(const AM_MEDIA_TYPE* type) {
    replaceType(type2_, type);
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
    if (filter()) {
        filter()->Run(0);
    }
}

dvOutputPin::Transport dvOutputPin::useTransport() const {
    // A worker killed while it holds the lock would leave it held for ever.
    const vwin::winthread::uninterruptible region;
    const vcore::spin_guard guard(transportLock_);
    Transport used{transport_.get(), transport_ && transportIsOwn_, {}};
    // Own pins count plainly, so they are not touched once per sample; they live as long as their filters.
    if (!used.own) {
        used.kept = transport_;
    }
    return used;
}

void dvOutputPin::setTransport(Reference<IMemInputPin> next, bool own) {
    const vcore::spin_guard guard(transportLock_);
    std::swap(transport_, next);
    transportIsOwn_ = own;
}

bool dvOutputPin::deliver(IMediaSample* sample) {
    const Transport to = useTransport();
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
    const Transport to = useTransport();
    if (!sample) {
        return !to.pin;
    }
    const bool taken = send(to, sample);
    if (!to.pin || !taken) {
        sample->Release();
    }
    return taken;
}

bool dvOutputPin::send(const Transport& to, IMediaSample* sample) {
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
    const Transport to = useTransport();
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

void dvOutputPin::takeConnection(IPin* pin, bool own, bool referenced) {
    setPeer(pin, referenced);
    void* queried = nullptr;
    if (FAILED(pin->QueryInterface(IID_IMemInputPin, &queried))) {
        return;
    }
    Reference<IMemInputPin> next;
    next.adopt(static_cast<IMemInputPin*>(queried));
    setTransport(std::move(next), own);
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = checkUnconnected(receiver); free != S_OK) {
        return free;
    }
    // For the time of the call, and with an own peer until that is disconnected and releases it.
    AddRef();
    const bool own = isOwn(receiver);
    const bool mutual = (mt && SUCCEEDED(receiver->ReceiveConnection(this, mt))) ||
                        SUCCEEDED(receiver->ReceiveConnection(this, mediaType()));
    if (!mutual && receiver->QueryAccept(mediaType()) != S_OK) {
        Release();
        return S_FALSE;
    }
    // An own peer that was really connected has taken a reference on itself; `Disconnect` releases that one.
    // Any other peer is referenced here, and releases nothing of this pin's that it has not taken.
    const bool houseRules = own && mutual;
    takeConnection(receiver, own, !houseRules);
    if (!houseRules) {
        Release();
    }
    if (const Transport to = useTransport(); to.pin) {
        to.pin->NotifyAllocator(allocator_.get(), FALSE);
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) {
    if (const HRESULT free = checkUnconnected(pin); free != S_OK) {
        return free;
    }
    setType(mt);
    const bool own = isOwn(pin);
    takeConnection(pin, own, !own);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::Disconnect() {
    if (!connected()) {
        return S_FALSE;
    }
    setTransport({}, false);
    takePeer()->Release();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvOutputPin::QueryId(LPWSTR* id) {
    if (!id || !*id) {
        return E_POINTER;
    }
    lstrcpynW(*id, name(), MAX_PIN_NAME);
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

} // namespace vvideo
