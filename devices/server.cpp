/// @file
/// The entry points of the COM server DLL.
#include "devices/class_factory.h"
#include "devices/registration.h"

#include <new>

using devices::class_factory;

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (!class_factory::serves(clsid)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    auto* factory = new (std::nothrow) class_factory(clsid);
    if (!factory) {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = factory->QueryInterface(iid, out);
    factory->Release();
    return result;
}

STDAPI DllCanUnloadNow() {
    return devices::object_count::alive() == 0 && class_factory::locks() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    try {
        return devices::registration::add();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

STDAPI DllUnregisterServer() {
    try {
        return devices::registration::remove();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}
