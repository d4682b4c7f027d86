/// @file
/// Makes this server's objects.
#pragma once

#include "devices/object_count.h"

#include <unknwn.h>

namespace devices {

/// The factory of one class. Any thread.
class class_factory final : public IClassFactory, private object_count {
public:
    /// Whether there is a factory for a class.
    static bool serves(REFCLSID clsid);
    /// `clsid` is one that is served.
    explicit class_factory(REFCLSID clsid) : clsid_(clsid) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    /// A camera that is lost cannot be made: HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED). No aggregation.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

    /// How often the server is locked.
    static long locks() { return InterlockedCompareExchange(&locks_, 0, 0); }

private:
    ~class_factory() = default;

    inline static volatile LONG locks_ = 0;
    const CLSID clsid_;
    volatile LONG references_ = 1;
};

} // namespace devices
