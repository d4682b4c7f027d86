#include "video/enum_pins.h"

#include <new>

namespace vvideo {

dvEnumPins::~dvEnumPins() {
    for (ULONG i = 0; i < _count; ++i)
        _pins[i]->Release();
}

bool dvEnumPins::setPin(IUnknown* pin) {
    void* queried = nullptr;
    if (!pin || _count == capacity || FAILED(pin->QueryInterface(IID_IPin, &queried)))
        return false;
    _pins[_count] = static_cast<IPin*>(queried);
    _pins[_count++]->AddRef();
    return true;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::QueryInterface(REFIID id, void** out) {
    return answer(id == IID_IEnumPins || id == IID_IUnknown ? this : nullptr, out);
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Next(ULONG n, IPin** out, ULONG* fetched) {
    if (!out || !fetched)
        return E_POINTER;
    for (*fetched = 0; *fetched < n && _position < _count; ++*fetched) {
        out[*fetched] = _pins[_position++];
        out[*fetched]->AddRef();
    }
    return *fetched == n ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Skip(ULONG n) {
    _position += n;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Reset() {
    _position = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Clone(IEnumPins** out) {
    if (!out)
        return E_POINTER;
    auto* const clone = new (std::nothrow) dvEnumPins;
    *out = clone;
    if (!clone)
        return E_OUTOFMEMORY;
    for (ULONG i = 0; i < _count; ++i)
        clone->setPin(_pins[i]);
    return S_OK;
}

HRESULT enumeratePins(std::initializer_list<IPin*> pins, IEnumPins** out) {
    if (!out)
        return E_POINTER;
    auto* const made = new (std::nothrow) dvEnumPins;
    *out = made;
    if (!made)
        return E_POINTER;
    for (IPin* const pin : pins)
        made->setPin(pin);
    return S_OK;
}

} // namespace vvideo
