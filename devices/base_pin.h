/// @file
/// What input and output pins have in common.
#pragma once

#include "devices/com_ref.h"
#include "devices/media_type.h"

#include <vector>

namespace devices {

class base_filter;

/// A pin's name, direction and connection. A pin is a member of its filter: references to it are references
/// to the filter. The peer is held with a reference while connected. The filter's `control()` guards all
/// members; they change only while the filter is stopped.
class base_pin : public IPin {
public:
    base_pin(const base_pin&) = delete;
    base_pin& operator=(const base_pin&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // IPin
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** out) override;
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* out) override;
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* out) override;
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* out) override;
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* out) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** out) override;
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* count) override;

    /// This object as the IPin that peers see.
    IPin* as_pin() { return this; }
    const wchar_t* name() const { return name_; }
    bool connected() const { return static_cast<bool>(peer_); }
    IPin* peer() const { return peer_.get(); }
    const media_type& type() const { return type_; }

protected:
    /// `owner` and `name` outlive the pin.
    base_pin(base_filter& owner, PIN_DIRECTION direction, const wchar_t* name)
        : owner_(owner), direction_(direction), name_(name) {}
    ~base_pin() = default;

    /// Whether the pin can work with a type, as far as the filter's other pins stand now.
    virtual bool accepts(const AM_MEDIA_TYPE& type) = 0;
    /// The types to offer, the preferred first.
    virtual std::vector<media_type> offered() = 0;
    /// Called after the connection is made or before it is given up.
    virtual void on_disconnect() = 0;

    /// Whether a connection to `peer` may be made now: both there, this one free, filter stopped, directions
    /// opposite.
    HRESULT check_peer(IPin* peer) const;
    void keep_connection(IPin* peer, media_type type);
    void drop_connection();

    base_filter& owner() const { return owner_; }

private:
    base_filter& owner_;
    const PIN_DIRECTION direction_;
    const wchar_t* const name_;
    com_ref<IPin> peer_;
    media_type type_;
};

} // namespace devices
