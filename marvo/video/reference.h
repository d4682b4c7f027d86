/// @file
/// Ownership of one reference on a COM object.
#pragma once

#include "marvo/core/platform.h"

#include <utility>

namespace vvideo {

/// Holds one reference on a COM object, or none.
template <class T>
class Reference {
public:
    Reference() = default;
    /// Another reference on the same object.
    Reference(const Reference& source) { share(source.object_); }
    /// Takes the reference over; `source` holds none then.
    Reference(Reference&& source) noexcept : object_(source.release()) {}
    /// Releases the reference held before and takes another one on the object of `source`.
    Reference& operator=(const Reference& source) {
        share(source.object_);
        return *this;
    }
    /// Releases the reference held before and takes over that of `source`, which holds none then.
    Reference& operator=(Reference&& source) noexcept {
        adopt(source.release());
        return *this;
    }
    ~Reference() { adopt(nullptr); }

    /// Takes over a reference that the caller has; the one held before is released.
    void adopt(T* object) {
        if (T* const old = std::exchange(object_, object)) {
            old->Release();
        }
    }
    /// Takes a reference of its own (on none, when `object` is null).
    void share(T* object) {
        if (object) {
            object->AddRef();
        }
        adopt(object);
    }
    /// Gives the reference up without releasing it.
    T* release() { return std::exchange(object_, nullptr); }

    /// The object, without a reference for the caller; null when there is none.
    T* get() const { return object_; }
    /// The object's members; there must be an object.
    T* operator->() const { return object_; }
    /// Whether there is an object.
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

} // namespace vvideo
