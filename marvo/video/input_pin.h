/// @file
/// The input pin.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/core/semaphore.h"
#include "marvo/video/enum_media_types.h"
#include "marvo/video/media_type.h"
#include "marvo/video/pin_base.h"
#include "marvo/video/sink.h"

#include <atomic>

namespace vvideo {

/// An input pin that hands each sample to its filter's sink.
///
/// References. A foreign peer follows plain COM rules: it is referenced while connected, its samples are not
/// released here, its allocator is referenced. With an own peer, and for an unconnected pin that is called
/// directly, the house's rules hold: a received sample's reference passes to this pin, which releases it, and
/// the peer is kept without a reference. Both own pins still release each other when they are disconnected,
/// so each takes one reference on itself when it is connected for the other to release, and a full cycle
/// leaves both counts as they were. A referenced pin keeps its filter alive; the filter deletes its pin,
/// never `Release`s it.
///
/// Threads: `Receive`, `ReceiveMultiple` and `EndOfStream` come on the upstream streaming thread, everything
/// else on the thread that builds the graph. The sink lock is held by `registerSink`, `unregisterSink` and
/// `ReceiveMultiple` (while it calls the sink), so no sink vanishes during a batch. `Receive` runs unlocked.
class MARVO_API dvInputPin : public PinBase, public IMemInputPin {
public:
    /// A pin of `filter`, which is not referenced. The last argument is not used.
    dvInputPin(IBaseFilter* filter, const wchar_t* name, int);
    ~dvInputPin() override;

    /// Sets the object that gets the samples. It must be there before the pin is connected.
    void registerSink(dvSink* sink);
    /// Takes the sink away, after a batch being delivered.
    void unregisterSink();
    /// Adds a copy of the type to those that the pin enumerates; beyond 16 it is dropped.
    void addType(dvMediaType& type);
    /// The connection type, all zero before the first connection.
    _AMMediaType* type() { return mediaType(); }
    /// The allocator that the upstream pin named last, null when none; no reference is added.
    IMemAllocator* allocator() const { return allocator_; }

    /// `IUnknown` and `IPin`, `IMemInputPin`.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override;
    /// References the filter as well.
    ULONG STDMETHODCALLTYPE AddRef() override;
    /// Releases the filter as well, which may end both.
    ULONG STDMETHODCALLTYPE Release() override;

    /// Takes `pin` as the peer, with a copy of `mt`, without asking either. `VFW_E_ALREADY_CONNECTED` when
    /// connected.
    HRESULT STDMETHODCALLTYPE Connect(IPin* pin, const AM_MEDIA_TYPE* mt) override;
    /// As `Connect`, when the sink accepts the type; else `VFW_E_TYPE_NOT_ACCEPTED`.
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pin, const AM_MEDIA_TYPE* mt) override;
    /// Forgets the peer and what came with it; `S_FALSE` when not connected.
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    /// The name, in memory of COM's task allocator.
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
    /// Asks the sink; `VFW_E_TYPE_NOT_ACCEPTED` also without one.
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* mt) override;
    /// Deliberate: always the one enumerator of this pin, with a reference added and its position as it is.
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** out) override;
    /// None.
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* n) override;
    /// Tells the sink.
    HRESULT STDMETHODCALLTYPE EndOfStream() override;

    /// The allocator that was notified; with a reference added only for a foreign peer.
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override;
    /// Keeps the allocator, referenced while connected. Unconnected, the caller's reference is taken over:
    /// the destructor releases it.
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    /// The properties of the allocator that was notified; the record stays as it is without one.
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    /// Hands the sample to the sink, whose answer is ignored: `S_OK`, and `E_OUTOFMEMORY` when an exception
    /// leaves the sink.
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    /// Hands each sample to the sink. `done` counts those taken. By the house's rules a refused sample is
    /// released, one taken is the sink's, and without a sink all are released.
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, long n, long* done) override;
    /// `S_FALSE`.
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override;

private:
    bool accepts(const AM_MEDIA_TYPE* mt);
    void takeConnection(IPin* pin, const AM_MEDIA_TYPE* mt);
    void dropAllocator();
    template <class Call>
    HRESULT tellSink(Call call);

    vcore::semaphore sinkLock_;
    IMemAllocator* allocator_ = nullptr;
    bool allocatorReferenced_ = false;
    std::atomic<dvSink*> sink_{nullptr}; // changed under the sink lock, read at any time
    dvEnumMediaTypes types_;
};

} // namespace vvideo
