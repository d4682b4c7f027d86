#include "marvo/video/pin_base.h"

#include <utility>

namespace vvideo {

namespace {

/// Answered by own pins only, with their `IPin` part.
constexpr IID ownPin = {0x6d1f3b52, 0x84c7, 0x4e0a, {0x9b, 0x1e, 0x27, 0xf5, 0x60, 0xd8, 0x3c, 0xa4}};

} // namespace

PinBase::PinBase(IBaseFilter* filter, const wchar_t* name, PIN_DIRECTION direction)
    : filter_(filter), direction_(direction) {
    lstrcpynW(name_, name ? name : L"", MAX_PIN_NAME);
}

PinBase::~PinBase() {
    if (peerReferenced_) {
        peer_->Release();
    }
}

bool PinBase::isOwn(IPin* pin) {
    void* own = nullptr;
    if (!pin || FAILED(pin->QueryInterface(ownPin, &own))) {
        return false;
    }
    static_cast<IPin*>(own)->Release();
    return true;
}

HRESULT PinBase::checkUnconnected(IPin* pin) const {
    if (peer_) {
        return VFW_E_ALREADY_CONNECTED;
    }
    return pin ? S_OK : E_POINTER;
}

void PinBase::setPeer(IPin* pin, bool referenced) {
    if (referenced) {
        pin->AddRef();
    }
    peer_ = pin;
    peerReferenced_ = referenced;
}

IPin* PinBase::takePeer() {
    peerReferenced_ = false;
    return std::exchange(peer_, nullptr);
}

HRESULT STDMETHODCALLTYPE PinBase::QueryInterface(REFIID id, void** out) {
    const bool known = id == IID_IPin || id == IID_IUnknown || id == ownPin;
    return answer(known ? static_cast<IPin*>(this) : nullptr, out);
}

HRESULT STDMETHODCALLTYPE PinBase::ConnectedTo(IPin** pin) {
    if (!peer_) {
        return VFW_E_NOT_CONNECTED;
    }
    if (!pin) {
        return E_POINTER;
    }
    peer_->AddRef();
    *pin = peer_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::ConnectionMediaType(AM_MEDIA_TYPE* mt) {
    if (!mt) {
        return E_POINTER;
    }
    copyMediaType(*mt, type_);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::QueryPinInfo(PIN_INFO* info) {
    if (!info) {
        return E_POINTER;
    }
    if (filter_) {
        filter_->AddRef();
    }
    info->pFilter = filter_;
    info->dir = direction_;
    lstrcpynW(info->achName, name_, MAX_PIN_NAME);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::QueryDirection(PIN_DIRECTION* direction) {
    if (!direction) {
        return E_POINTER;
    }
    *direction = direction_;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::EndOfStream() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::BeginFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::EndFlush() {
    return S_OK;
}

HRESULT STDMETHODCALLTYPE PinBase::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

} // namespace vvideo
