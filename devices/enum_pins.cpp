#include "devices/enum_pins.h"

#include "devices/base_pin.h"

#include <new>

namespace devices {

enum_pins::enum_pins(base_filter& filter) : filter_(filter), keeper_(&filter) {
    guard held(filter.control());
    version_ = filter.pin_version();
}

enum_pins::enum_pins(const enum_pins& other)
    : IEnumPins(), object_count(), filter_(other.filter_), keeper_(other.keeper_), version_(other.version_),
      position_(other.position_) {}

HRESULT enum_pins::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IUnknown || iid == IID_IEnumPins) {
        *out = static_cast<IEnumPins*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

ULONG enum_pins::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG enum_pins::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT enum_pins::Next(ULONG count, IPin** out, ULONG* fetched) {
    if (!out) {
        return E_POINTER;
    }
    if (!fetched && count != 1) {
        return E_INVALIDARG;
    }
    if (fetched) {
        *fetched = 0;
    }
    guard held(filter_.control());
    if (version_ != filter_.pin_version()) {
        return VFW_E_ENUM_OUT_OF_SYNC;
    }
    ULONG done = 0;
    for (; done < count && position_ < filter_.pin_count(); ++done) {
        out[done] = com_ref<IPin>(filter_.pin(position_++)->as_pin()).detach();
    }
    if (fetched) {
        *fetched = done;
    }
    return done == count ? S_OK : S_FALSE;
}

HRESULT enum_pins::Skip(ULONG count) {
    guard held(filter_.control());
    if (version_ != filter_.pin_version()) {
        return VFW_E_ENUM_OUT_OF_SYNC;
    }
    const ULONG left = static_cast<ULONG>(filter_.pin_count() - position_);
    position_ += static_cast<int>(count < left ? count : left);
    return count <= left ? S_OK : S_FALSE;
}

HRESULT enum_pins::Reset() {
    guard held(filter_.control());
    version_ = filter_.pin_version();
    position_ = 0;
    return S_OK;
}

HRESULT enum_pins::Clone(IEnumPins** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = new (std::nothrow) enum_pins(*this);
    return *out ? S_OK : E_OUTOFMEMORY;
}

} // namespace devices
