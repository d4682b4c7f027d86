/// @file
/// The base of the library's own COM objects.
#pragma once

#include "marvo/core/platform.h"

namespace vvideo {

/// A COM object of interface `T` with its reference count, which begins with the creator's reference. The
/// object deletes itself with the last one. Deliberate: the count is plain, not interlocked. References on
/// filters, pins and enumerators are taken by the threads that build and run a graph, one at a time, and
/// never once per sample.
template <class T>
class dvObj : public T {
public:
    /// The new count.
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    /// The new count; deletes the object at 0. Nothing happens when the count is 0 already.
    ULONG STDMETHODCALLTYPE Release() override {
        if (!references_) {
            return 0;
        }
        const ULONG left = --references_;
        if (!left) {
            delete this;
        }
        return left;
    }
    /// Answers `IID_IUnknown` only.
    virtual HRESULT queryInterface(const GUID& id, void** out) {
        return answer(id == IID_IUnknown ? static_cast<T*>(this) : nullptr, out);
    }
    virtual ~dvObj() = default;

protected:
    dvObj() = default;
    dvObj(const dvObj&) = delete;
    dvObj& operator=(const dvObj&) = delete;

    /// The end of an interface query: hands out `part` with a reference added, or nothing when it is null.
    template <class Part>
    HRESULT answer(Part* part, void** out) {
        if (!out) {
            return E_POINTER;
        }
        *out = part;
        if (!part) {
            return E_NOINTERFACE;
        }
        part->AddRef();
        return S_OK;
    }

private:
    ULONG references_ = 1;
};

} // namespace vvideo
