#include "devices/class_factory.h"

#include "devices/camera.h"
#include "devices/decoder.h"
#include "devices/device_presence.h"
#include "devices/splitter.h"

#include <new>

namespace devices {

namespace {

struct served_class {
    const CLSID& clsid;
    base_filter* (*make)();
};

const served_class classes[] = {
    {camera::clsid, []() -> base_filter* { return new camera; }},
    {splitter::clsid, []() -> base_filter* { return new splitter; }},
    {decoder::clsid, []() -> base_filter* { return new decoder; }},
};

const served_class* find(REFCLSID clsid) {
    for (const served_class& entry : classes) {
        if (entry.clsid == clsid) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace

bool class_factory::serves(REFCLSID clsid) {
    return find(clsid) != nullptr;
}

HRESULT class_factory::QueryInterface(REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    if (iid == IID_IUnknown || iid == IID_IClassFactory) {
        *out = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

ULONG class_factory::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG class_factory::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT class_factory::CreateInstance(IUnknown* outer, REFIID iid, void** out) {
    if (!out) {
        return E_POINTER;
    }
    *out = nullptr;
    if (outer) {
        return CLASS_E_NOAGGREGATION;
    }
    try {
        if (clsid_ == camera::clsid) {
            device_presence::enter(camera_config::load(camera_config::location()).scenario);
            if (!device_presence::present()) {
                return device_presence::lost_error;
            }
        }
        base_filter* made = find(clsid_)->make();
        const HRESULT result = made->QueryInterface(iid, out);
        made->Release();
        return result;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT class_factory::LockServer(BOOL lock) {
    if (lock) {
        InterlockedIncrement(&locks_);
    } else {
        InterlockedDecrement(&locks_);
    }
    return S_OK;
}

} // namespace devices
