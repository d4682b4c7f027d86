#include "video/enum_media_types.h"

#include <new>

namespace vvideo {

bool dvEnumMediaTypes::setType(const AM_MEDIA_TYPE& type) {
    if (_count == capacity)
        return false;
    _types[_count++] = &type;
    return true;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::QueryInterface(REFIID id, void** out) {
    return answer(id == IID_IEnumMediaTypes || id == IID_IUnknown ? this : nullptr, out);
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Next(ULONG n, AM_MEDIA_TYPE** out, ULONG* fetched) {
    if (!out)
        return E_POINTER;
    ULONG given = 0;
    while (given < n && _position < _count)
        out[given++] = _types[_position++];
    if (fetched)
        *fetched = given;
    return given == n ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Skip(ULONG n) {
    _position += n;
    return _position >= _count ? S_FALSE : S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Reset() {
    _position = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumMediaTypes::Clone(IEnumMediaTypes** out) {
    if (!out)
        return E_POINTER;
    auto* const clone = new (std::nothrow) dvEnumMediaTypes;
    *out = clone;
    if (!clone)
        return E_OUTOFMEMORY;
    for (ULONG i = 0; i < _count; ++i)
        clone->setType(*_types[i]);
    return S_OK;
}

} // namespace vvideo
