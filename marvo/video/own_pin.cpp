#include "marvo/video/own_pin.h"

#include "marvo/video/reference.h"

namespace vvideo {

const IID IID_dvOwnPin = {0x6d1f3b52, 0x84c7, 0x4e0a, {0x9b, 0x1e, 0x27, 0xf5, 0x60, 0xd8, 0x3c, 0xa4}};

bool isOwnPin(IPin* pin) {
    void* own = nullptr;
    if (!pin || FAILED(pin->QueryInterface(IID_dvOwnPin, &own))) {
        return false;
    }
    static_cast<IPin*>(own)->Release();
    return true;
}

HRESULT fillPinInfo(PIN_INFO* info, IBaseFilter* filter, PIN_DIRECTION direction, const wchar_t* name) {
    if (!info) {
        return E_POINTER;
    }
    info->pFilter = filter;
    if (filter) {
        filter->AddRef();
    }
    info->dir = direction;
    lstrcpynW(info->achName, name, MAX_PIN_NAME);
    return S_OK;
}

void copyPinName(pinName& to, const wchar_t* name) {
    lstrcpynW(to, name ? name : L"", MAX_PIN_NAME);
}

} // namespace vvideo
