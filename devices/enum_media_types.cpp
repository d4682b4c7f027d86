#include "devices/enum_media_types.h"

#include <new>

namespace devices {

HRESULT enum_media_types::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IUnknown || iid == IID_IEnumMediaTypes) {
        *out = static_cast<IEnumMediaTypes*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

ULONG enum_media_types::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG enum_media_types::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT enum_media_types::Next(ULONG count, AM_MEDIA_TYPE** out, ULONG* fetched) {
    if (!out) {
        return E_POINTER;
    }
    if (!fetched && count != 1) {
        return E_INVALIDARG;
    }
    if (fetched) {
        *fetched = 0;
    }
    ULONG done = 0;
    for (; done < count && position_ < types_.size(); ++done) {
        auto* copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
        if (!copy || FAILED(types_[position_].copy_to(*copy))) {
            CoTaskMemFree(copy);
            break;
        }
        ++position_;
        out[done] = copy;
    }
    if (fetched) {
        *fetched = done;
    }
    return done == count ? S_OK : S_FALSE;
}

HRESULT enum_media_types::Skip(ULONG count) {
    const size_t left = types_.size() - position_;
    position_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
}

HRESULT enum_media_types::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT enum_media_types::Clone(IEnumMediaTypes** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    try {
        auto* copy = new enum_media_types(types_);
        copy->position_ = position_;
        *out = copy;
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace devices
