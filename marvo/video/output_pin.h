/// @file
/// The output pin.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/mutex2.h"
#include "marvo/core/platform.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/video/media_type.h"
#include "marvo/video/pin_base.h"
#include "marvo/video/reference.h"

namespace vvideo {

/// An output pin that pushes samples to the connected pin. There is no negotiation: the peer is offered the
/// pin's type and told its allocator.
///
/// References: as `dvInputPin` says. A foreign peer is referenced while connected; with an own peer this pin
/// takes a reference on itself, which the peer's `Disconnect` releases.
///
/// Threads: samples are sent on the filter's delivery thread, everything else happens on the thread that
/// builds the graph. A spin lock guards the transport, so that the pin may be disconnected while a sample is
/// under way: a foreign transport is referenced for the call, an own one lives as long as its filter. It is
/// not held during the call.
class MARVO_API dvOutputPin : public PinBase {
public:
    /// A pin of `filter`, which is not referenced.
    dvOutputPin(IBaseFilter* filter, const wchar_t* name);
    ~dvOutputPin() override;

    /// Sets the owner, without a reference.
    void setFilter(IBaseFilter* filter) { PinBase::setFilter(filter); }
    /// Sets the type offered on connection to a copy of `type`; null changes nothing.
    void setType(const AM_MEDIA_TYPE* type);
    /// Sets a second type, which is kept for the owner, in the same way.
    void setType2(const AM_MEDIA_TYPE* type);
    /// Sets the allocator that the peer is told at the next connection, with a reference; null for none.
    void setMem(IMemAllocator* allocator);
    /// Runs the owning filter.
    void Run();

    /// Hands a sample on and leaves the caller's reference untouched, whatever the peer is. False when the
    /// peer failed; true also when there is none. A worker thread may be killed while a foreign peer holds it
    /// up.
    bool deliver(IMediaSample* sample);
    /// The same, but the caller's reference is released when the peer failed or there is none. Nothing is
    /// released here when the peer took the sample: an own peer has released it, by the house's rules, and
    /// with a foreign one it is still the caller's. A filter that does not know its peer uses `deliver`.
    bool sendSample(IMediaSample* sample);
    /// Hands `n` samples on at once. With a peer nothing is released here, also when it failed: a foreign one
    /// leaves the references to the caller, an own one releases each sample that its sink refused. Without a
    /// peer one reference of each is released.
    void sendSamples(IMediaSample** samples, long n);

    /// Offers `mt` (unless null), then the own type. A peer that refuses the connection but accepts the type
    /// by `QueryAccept` counts as connected. `S_FALSE` when it refuses that, too.
    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* mt) override;
    /// Takes `pin` as the peer and `mt` as the own type, without asking either. `VFW_E_ALREADY_CONNECTED`
    /// when connected.
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) override;
    /// Forgets the peer and what came with it; `S_FALSE` when not connected.
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    /// Deliberate, unlike the input pin: copies the name into the buffer of at least 128 characters that
    /// `*id` points to already. Callers within the library pass one; the graph manager does not call this.
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
    /// Accepts everything: it is the input pins that choose.
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* mt) override;
    /// `E_NOTIMPL`: the one type is offered on connection.
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** out) override;
    /// `E_NOTIMPL`.
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* n) override;

private:
    struct Transport;

    static void replaceType(dvMediaType& type, const AM_MEDIA_TYPE* by);
    static bool send(const Transport& to, IMediaSample* sample);
    void takeConnection(IPin* pin, bool own, bool referenced);
    void setTransport(Reference<IMemInputPin> next, bool own);
    Transport useTransport() const;

    dvMediaType type2_;
    mutable vcore::mutex2 transportLock_;
    Reference<IMemInputPin> transport_ MARVO_GUARDED_BY(transportLock_);
    bool transportIsOwn_ MARVO_GUARDED_BY(transportLock_) = false;
    Reference<IMemAllocator> allocator_;
};

} // namespace vvideo
