#include "marvo/video/enum_pins.h"

#include <algorithm>
#include <new>

namespace vvideo {

dvEnumPins::~dvEnumPins() {
    for (ULONG i = 0; i < count_; ++i) {
        pins_[i]->Release();
    }
}

bool dvEnumPins::setPin(IUnknown* pin) {
    void* queried = nullptr;
    if (!pin || count_ == capacity || FAILED(pin->QueryInterface(IID_IPin, &queried))) {
        return false;
    }
    pins_[count_] = static_cast<IPin*>(queried);
    pins_[count_++]->AddRef();
    return true;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::QueryInterface(REFIID id, void** out) {
    return answer(id == IID_IEnumPins || id == IID_IUnknown ? this : nullptr, out);
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Next(ULONG n, IPin** out, ULONG* fetched) {
    if (!out || !fetched) {
        return E_POINTER;
    }
    for (*fetched = 0; *fetched < n && position_ < count_; ++*fetched) {
        out[*fetched] = pins_[position_++];
        out[*fetched]->AddRef();
    }
    return *fetched == n ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Skip(ULONG n) {
    position_ += std::min(n, ~position_); // never comes round to the start
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE dvEnumPins::Clone(IEnumPins** out) {
    if (!out) {
        return E_POINTER;
    }
    auto* const clone = new (std::nothrow) dvEnumPins;
    *out = clone;
    if (!clone) {
        return E_OUTOFMEMORY;
    }
    for (ULONG i = 0; i < count_; ++i) {
        clone->setPin(pins_[i]);
    }
    return S_OK;
}

HRESULT enumeratePins(std::initializer_list<IPin*> pins, IEnumPins** out) {
    if (!out) {
        return E_POINTER;
    }
    auto* const made = new (std::nothrow) dvEnumPins;
    *out = made;
    if (!made) {
        return E_POINTER;
    }
    for (IPin* const pin : pins) {
        made->setPin(pin);
    }
    return S_OK;
}

} // namespace vvideo
