/// @file
/// A counted reference to a COM object.
#pragma once

#include <unknwn.h>

#include <utility>

namespace devices {

/// Holds one reference to a COM object and releases it at the end; may be empty. Not for sharing between
/// threads.
template <class T>
class com_ref {
public:
    com_ref() = default;
    /// Adds a reference to `object` (null allowed).
    explicit com_ref(T* object) : object_(object) {
        if (object_) {
            object_->AddRef();
        }
    }
    com_ref(const com_ref& other) : com_ref(other.object_) {}
    com_ref(com_ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~com_ref() { reset(); }

    com_ref& operator=(com_ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// Gives the reference back; empty afterwards. The member is emptied first, because releasing may come
    /// back here.
    void reset() {
        if (T* old = std::exchange(object_, nullptr)) {
            old->Release();
        }
    }

    /// Where a function stores a pointer that already carries a reference for the caller. Empties first.
    T** put() {
        reset();
        return &object_;
    }

    /// The pointer without its reference, which passes to the caller.
    T* detach() { return std::exchange(object_, nullptr); }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

} // namespace devices
