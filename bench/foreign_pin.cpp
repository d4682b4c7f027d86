#include "bench/foreign_pin.h"

#include <stdexcept>

STDMETHODIMP ForeignPin::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (iid == IID_IUnknown || iid == IID_IPin) {
        *out = static_cast<IPin*>(this);
    } else if (iid == IID_IMemInputPin && direction_ == PINDIR_INPUT) {
        *out = static_cast<IMemInputPin*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP ForeignPin::ReceiveConnection(IPin* peer, const AM_MEDIA_TYPE*) {
    peer_ = vwin::com_<IPin>(peer);
    return S_OK;
}

STDMETHODIMP ForeignPin::Disconnect() {
    if (!peer_) {
        return S_FALSE;
    }
    peer_.clear();
    return S_OK;
}

STDMETHODIMP ForeignPin::ConnectedTo(IPin** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = vwin::com_<IPin>(peer_).detach();
    return *out ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP ForeignPin::QueryPinInfo(PIN_INFO* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = {};
    out->dir = direction_;
    return S_OK;
}

STDMETHODIMP ForeignPin::QueryDirection(PIN_DIRECTION* out) {
    if (!out) {
        return E_POINTER;
    }
    *out = direction_;
    return S_OK;
}

STDMETHODIMP ForeignPin::Receive(IMediaSample*) {
    ++received_;
    return S_OK;
}

STDMETHODIMP ForeignPin::ReceiveMultiple(IMediaSample**, long count, long* taken) {
    received_ += static_cast<int>(count);
    if (taken) {
        *taken = count;
    }
    return S_OK;
}

vwin::com_<IPin> pinOf(IBaseFilter& filter, ULONG index) {
    vwin::com_<IEnumPins> pins;
    if (FAILED(filter.EnumPins(pins.put()))) {
        throw std::runtime_error("a filter has no pins");
    }
    vwin::com_<IPin> pin;
    for (ULONG i = 0; i <= index; ++i) {
        ULONG fetched = 0;
        if (pins->Next(1, pin.put(), &fetched) != S_OK) {
            throw std::runtime_error("a filter has too few pins");
        }
    }
    return pin;
}
