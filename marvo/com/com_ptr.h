/// @file
/// Reference-counting smart pointers for COM interfaces.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"

#include <utility>

namespace vwin {

/// The id of the interface T.
template <class T>
inline const IID& interfaceId() {
    return __uuidof(T);
}
/// As above; not every compiler's headers attach the id to this interface.
template <>
inline const IID& interfaceId<IMediaPosition>() {
    return IID_IMediaPosition;
}
/// As above; not every compiler's headers attach the id to this interface.
template <>
inline const IID& interfaceId<IMediaEventEx>() {
    return IID_IMediaEventEx;
}
/// As above; not every compiler's headers attach the id to this interface.
template <>
inline const IID& interfaceId<IVideoWindow>() {
    return IID_IVideoWindow;
}
/// As above; not every compiler's headers attach the id to this interface.
template <>
inline const IID& interfaceId<IBasicVideo>() {
    return IID_IBasicVideo;
}

/// A smart pointer that owns one reference to a COM interface `T`, or holds nothing.
///
/// Threads: as thread-safe as a raw pointer; two threads must not change the same pointer object at once.
/// Ownership: every way in says whether a reference is added or taken over; the destructor releases it.
/// There is no conversion to a raw pointer and no overloaded `&`: ptr() and put() say what is meant.
template <class T>
class com_ {
public:
    /// Holds nothing.
    com_() = default;
    /// Shares `object` (null allowed): a reference is added.
    explicit com_(T* object) : object_(object) {
        if (object_ != nullptr) {
            object_->AddRef();
        }
    }
    /// Shares the other pointer's object.
    com_(const com_& other) : com_(other.object_) {}
    /// Takes the other pointer's reference over and leaves it empty.
    com_(com_&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// Releases the held reference.
    ~com_() { clear(); }

    /// Shares or takes over the other pointer's object; the one held before is released last.
    com_& operator=(com_ other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// The interface without a reference added; null when nothing is held.
    T* ptr() const { return object_; }
    /// The interface, for calling. Must not be used while nothing is held.
    T* operator->() const { return object_; }
    /// Whether an interface is held.
    explicit operator bool() const { return object_ != nullptr; }

    /// Asks `object` for the interface T and holds the answer in place of what was held. False, holding
    /// nothing, when `object` is null or does not have the interface.
    bool ref(IUnknown* object) {
        T* found = nullptr;
        if (object == nullptr ||
            FAILED(object->QueryInterface(interfaceId<T>(), reinterpret_cast<void**>(&found)))) {
            found = nullptr;
        }
        attach(found);
        return found != nullptr;
    }

    /// Creates an in-process object of the class and holds its interface T. False, holding nothing, when the
    /// class is not registered, has no such interface, or COM is not initialised on this thread.
    bool create(const GUID& clsid) {
        T* made = nullptr;
        if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, interfaceId<T>(),
                                    reinterpret_cast<void**>(&made)))) {
            made = nullptr;
        }
        attach(made);
        return made != nullptr;
    }

    /// Takes over a reference that the caller owns (null allowed); what was held is released.
    void attach(T* object) {
        T* former = std::exchange(object_, object);
        if (former != nullptr) {
            former->Release();
        }
    }

    /// Gives the reference to the caller, who must release it; holds nothing afterwards.
    [[nodiscard]] T* detach() { return std::exchange(object_, nullptr); }

    /// Releases what is held.
    void clear() { attach(nullptr); }

    /// An address for a function that hands out a reference; what was held is released first.
    T** put() {
        clear();
        return &object_;
    }

private:
    T* object_ = nullptr;
};

} // namespace vwin
