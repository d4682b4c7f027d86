/// @file
/// Ownership of one reference on a COM object.
#pragma once

#include "core/platform.h"

#include <utility>

namespace vvideo {

/// Holds one reference on a COM object, or none.
template <class T>
class reference {
public:
    reference() = default;
    reference(const reference& source) { share(source._object); }
    reference(reference&& source) noexcept : _object(source.release()) {}
    reference& operator=(const reference& source) {
        share(source._object);
        return *this;
    }
    reference& operator=(reference&& source) noexcept {
        adopt(source.release());
        return *this;
    }
    ~reference() { adopt(nullptr); }

    /// Takes over a reference that the caller has; the one held before is released.
    void adopt(T* object) {
        if (T* const old = std::exchange(_object, object))
            old->Release();
    }
    /// Takes a reference of its own (on none, when `object` is null).
    void share(T* object) {
        if (object)
            object->AddRef();
        adopt(object);
    }
    /// Gives the reference up without releasing it.
    T* release() { return std::exchange(_object, nullptr); }

    T* get() const { return _object; }
    T* operator->() const { return _object; }
    explicit operator bool() const { return _object != nullptr; }

private:
    T* _object = nullptr;
};

} // namespace vvideo
