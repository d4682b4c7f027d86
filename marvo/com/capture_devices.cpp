#include "marvo/com/capture_devices.h"

namespace vwin {

namespace {

std::wstring lowered(std::wstring text) {
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

} // namespace

void initialiseCom() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
}

CaptureDevices::CaptureDevices() {
    com_<ICreateDevEnum> system;
    com_<IEnumMoniker> monikers;
    // S_FALSE, without an enumerator, means that the category is empty.
    if (!system.create(CLSID_SystemDeviceEnum) ||
        system->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, monikers.put(), 0) != S_OK ||
        !monikers) {
        return;
    }
    com_<IMoniker> device;
    for (ULONG fetched = 0; monikers->Next(1, device.put(), &fetched) == S_OK && fetched == 1; fetched = 0) {
        devices_.push_back(device);
    }
}

com_<IMoniker> CaptureDevices::byNumber(unsigned long number) const {
    return number < devices_.size() ? devices_[number] : com_<IMoniker>();
}

com_<IMoniker> CaptureDevices::byName(const std::wstring& name) const {
    const std::wstring wanted = lowered(name);
    com_<IMoniker> containing;
    for (const com_<IMoniker>& device : devices_) {
        const std::wstring present = lowered(friendlyName(device.ptr()));
        if (present == wanted) {
            return device;
        }
        if (!containing && present.find(wanted) != std::wstring::npos) {
            containing = device;
        }
    }
    return containing;
}

std::wstring CaptureDevices::friendlyName(IMoniker* device) {
    com_<IPropertyBag> properties;
    if (device == nullptr || FAILED(device->BindToStorage(nullptr, nullptr, __uuidof(IPropertyBag),
                                                          reinterpret_cast<void**>(properties.put())))) {
        return {};
    }
    VARIANT value;
    VariantInit(&value);
    std::wstring name;
    if (SUCCEEDED(properties->Read(L"FriendlyName", &value, nullptr)) && value.vt == VT_BSTR &&
        value.bstrVal != nullptr) {
        name = value.bstrVal;
    }
    VariantClear(&value);
    return name;
}

} // namespace vwin
