#include "app/window/camera_list.h"

#include "marvo.h"

#include <algorithm>

namespace app {

namespace {

std::wstring nameOf(IMoniker* device) {
    vwin::com_<IPropertyBag> bag;
    std::wstring name;
    if (SUCCEEDED(
            device->BindToStorage(nullptr, nullptr, IID_IPropertyBag, reinterpret_cast<void**>(bag.put())))) {
        VARIANT value;
        VariantInit(&value);
        if (SUCCEEDED(bag->Read(L"FriendlyName", &value, nullptr)) && value.vt == VT_BSTR) {
            name = value.bstrVal;
        }
        VariantClear(&value);
    }
    return name;
}

} // namespace

std::vector<std::wstring> cameraNames() {
    std::vector<std::wstring> names;
    vwin::com_<ICreateDevEnum> devices;
    vwin::com_<IEnumMoniker> list;
    if (FAILED(CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, IID_ICreateDevEnum,
                                reinterpret_cast<void**>(devices.put()))) ||
        devices->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, list.put(), 0) != S_OK) {
        return names;
    }
    vwin::com_<IMoniker> device;
    while (list->Next(1, device.put(), nullptr) == S_OK) {
        names.push_back(nameOf(device.ptr()));
    }
    return names;
}

int cameraNumber(const std::wstring& name) {
    const std::vector<std::wstring> names = cameraNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return name.empty() || found == names.end() ? 0 : static_cast<int>(found - names.begin());
}

} // namespace app
