/// @file
/// What the input and the output pin have in common.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/video/media_type.h"
#include "marvo/video/obj.h"

#include <atomic>

namespace vvideo {

/// The base of the library's own pins: owner, direction, name, media type and peer, and the answers that
/// follow from these.
///
/// Own pins know each other by a private interface, because other rules hold among them than with foreign
/// ones. So a peer is kept with a reference or, where the house's rules say so, without one; `dvInputPin`
/// tells these rules. `peerReferenced` may be asked on any thread, all else belongs to the thread that builds
/// the graph.
class MARVO_API PinBase : public dvObj<IPin> {
public:
    /// Whether a pin is one of ours; false for null.
    static bool isOwn(IPin* pin);

    /// `IUnknown` and `IPin`.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override;
    /// The peer with a reference added; `VFW_E_NOT_CONNECTED`, whatever the argument, when there is none.
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
    /// A copy of the pin's type, connected or not. Its format block is the caller's, from the process heap.
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* mt) override;
    /// The filter with a reference added, the direction and the name.
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
    /// `PINDIR_INPUT` or `PINDIR_OUTPUT`.
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
    /// Ignored: `S_OK`.
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    /// Flushing is not needed, since nothing is kept here: `S_OK`.
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    /// As `BeginFlush`.
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    /// Ignored: `S_OK`.
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

protected:
    /// An unconnected pin of `filter`, which is not referenced. The name is cut to what a `PIN_INFO` holds;
    /// null means an empty one.
    PinBase(IBaseFilter* filter, const wchar_t* name, PIN_DIRECTION direction);
    /// Releases a peer that is kept with a reference.
    ~PinBase() override;

    /// The answer to an attempt to connect `pin`: `VFW_E_ALREADY_CONNECTED`, `E_POINTER` for null, else
    /// `S_OK`.
    HRESULT checkUnconnected(IPin* pin) const;
    /// Whether there is a peer.
    bool connected() const { return peer_ != nullptr; }
    /// Whether the peer is kept by plain COM rules, with a reference.
    bool peerReferenced() const { return peerReferenced_; }
    /// Takes `pin` as the peer, with a reference or without one.
    void setPeer(IPin* pin, bool referenced);
    /// Forgets the peer, which must be there. The caller releases it: its own reference, or by the house's
    /// rules the one that an own peer has taken on itself.
    IPin* takePeer();

    /// The owner; null for none.
    IBaseFilter* filter() const { return filter_; }
    /// Sets the owner, without a reference.
    void setFilter(IBaseFilter* filter) { filter_ = filter; }
    /// The pin's media type.
    dvMediaType& mediaType() { return type_; }
    /// The name.
    const wchar_t* name() const { return name_; }

private:
    IBaseFilter* filter_;
    const PIN_DIRECTION direction_;
    wchar_t name_[MAX_PIN_NAME];
    dvMediaType type_;
    IPin* peer_ = nullptr;
    std::atomic<bool> peerReferenced_{false};
};

} // namespace vvideo
