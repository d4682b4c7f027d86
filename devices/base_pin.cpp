#include "devices/base_pin.h"

#include "devices/base_filter.h"
#include "devices/enum_media_types.h"

#include <cwchar>
#include <new>

namespace devices {

HRESULT base_pin::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IUnknown || iid == IID_IPin) {
        *out = static_cast<IPin*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

ULONG base_pin::AddRef() {
    return owner_.AddRef();
}

ULONG base_pin::Release() {
    return owner_.Release();
}

HRESULT base_pin::Disconnect() {
    guard held(owner_.control());
    if (!owner_.stopped()) {
        return VFW_E_NOT_STOPPED;
    }
    if (!connected()) {
        return S_FALSE;
    }
    on_disconnect();
    drop_connection();
    return S_OK;
}

HRESULT base_pin::ConnectedTo(IPin** out) {
    if (!out) {
        return E_POINTER;
    }
    guard held(owner_.control());
    *out = com_ref<IPin>(peer_).detach();
    return *out ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT base_pin::ConnectionMediaType(AM_MEDIA_TYPE* out) {
    if (!out) {
        return E_POINTER;
    }
    guard held(owner_.control());
    if (!connected()) {
        *out = AM_MEDIA_TYPE{};
        return VFW_E_NOT_CONNECTED;
    }
    return type_.copy_to(*out);
}

HRESULT base_pin::QueryPinInfo(PIN_INFO* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = PIN_INFO{};
    out->pFilter = com_ref<IBaseFilter>(&owner_).detach();
    out->dir = direction_;
    std::wcsncat(out->achName, name_, 127);
    return S_OK;
}

HRESULT base_pin::QueryDirection(PIN_DIRECTION* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = direction_;
    return S_OK;
}

HRESULT base_pin::QueryId(LPWSTR* out) {
    if (!out) {
        return E_POINTER;
    }
    const size_t length = std::wcslen(name_) + 1;
    *out = static_cast<LPWSTR>(CoTaskMemAlloc(length * sizeof(WCHAR)));
    if (!*out) {
        return E_OUTOFMEMORY;
    }
    std::wmemcpy(*out, name_, length);
    return S_OK;
}

HRESULT base_pin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (!type) {
        return E_POINTER;
    }
    guard held(owner_.control());
    return accepts(*type) ? S_OK : S_FALSE;
}

HRESULT base_pin::EnumMediaTypes(IEnumMediaTypes** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    guard held(owner_.control());
    try {
        *out = new enum_media_types(offered());
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT base_pin::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL;
}

HRESULT base_pin::check_peer(IPin* peer) const {
    if (!peer) {
        return E_POINTER;
    }
    if (connected()) {
        return VFW_E_ALREADY_CONNECTED;
    }
    if (!owner_.stopped()) {
        return VFW_E_NOT_STOPPED;
    }
    PIN_DIRECTION direction;
    const HRESULT result = peer->QueryDirection(&direction);
    if (FAILED(result)) {
        return result;
    }
    return direction == direction_ ? VFW_E_INVALID_DIRECTION : S_OK;
}

void base_pin::keep_connection(IPin* peer, media_type type) {
    peer_ = com_ref<IPin>(peer);
    type_ = std::move(type);
}

void base_pin::drop_connection() {
    peer_.reset();
    type_.clear();
}

} // namespace devices
