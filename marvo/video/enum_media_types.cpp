#include "marvo/video/enum_media_types.h"

#include <algorithm>
#include <new>

namespace vvideo {

bool dvEnumMediaTypes::setType(const AM_MEDIA_TYPE& type) {
    if (count_ == capacity) {
        return false;
    }
    types_[count_++] = &type;
    return true;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::QueryInterface(REFIID id, void** out) {
    return answer(id == IID_IEnumMediaTypes || id == IID_IUnknown ? this : nullptr, out);
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Next(ULONG n, AM_MEDIA_TYPE** out, ULONG* fetched) {
    if (!out) {
        return E_POINTER;
    }
    ULONG given = 0;
    while (given < n && position_ < count_) {
        out[given++] = types_[position_++];
    }
    if (fetched) {
        *fetched = given;
    }
    return given == n ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Skip(ULONG n) {
    position_ += std::min(n, ~position_); // never comes round to the start
    return position_ >= count_ ? S_FALSE : S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Clone(IEnumMediaTypes** out) {
    if (!out) {
        return E_POINTER;
    }
    auto* const clone = new (std::nothrow) dvEnumMediaTypes;
    *out = clone;
    if (!clone) {
        return E_OUTOFMEMORY;
    }
    for (ULONG i = 0; i < count_; ++i) {
        clone->setType(*types_[i]);
    }
    return S_OK;
}

} // namespace vvideo
