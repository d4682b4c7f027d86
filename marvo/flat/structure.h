/// @file
/// Structures of callers that were built with another version of the header.
#pragma once

#include "marvo/flat/failure.h"
#include "marvo_c.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace flat {

/// The size that a caller's structure says. Throws MARVO_E_ARGUMENT for null and for what is no size: it was
/// not set, mostly.
inline std::size_t sizeSaid(const void* structure, const char* what) {
    constexpr marvo_u32 least = 8;
    constexpr marvo_u32 most = 65536;
    if (!structure) {
        fail(MARVO_E_ARGUMENT, std::string("There is no ") + what + ": it is null.");
    }
    marvo_u32 size = 0;
    std::memcpy(&size, structure, sizeof size);
    if (size < least || size > most) {
        fail(MARVO_E_ARGUMENT, "The size of the " + std::string(what) + " says " + std::to_string(size) +
                                   " bytes; set it to sizeof the structure.");
    }
    return size;
}

/// What is put into a caller's structure. With `optional` there may be none.
template <class Structure>
class Answer {
public:
    /// Throws as `sizeSaid`.
    Answer(Structure* to, const char* what, bool optional = false)
        : to_(to), size_(to || !optional ? sizeSaid(to, what) : 0) {}
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    /// Puts it in, as much as the structure holds.
    void give() {
        if (!to_) {
            return;
        }
        value_.size = static_cast<marvo_u32>(size_);
        const std::size_t known = std::min(size_, sizeof(Structure));
        std::memcpy(static_cast<void*>(to_), &value_, known);
        std::memset(reinterpret_cast<unsigned char*>(to_) + known, 0, size_ - known);
    }

    /// Its members, all 0 at first.
    Structure* operator->() { return &value_; }
    /// The whole.
    Structure& operator*() { return value_; }

private:
    Structure* const to_;
    const std::size_t size_;
    Structure value_{};
};

/// A caller's structure that is read; what it lacks is 0. Throws as `sizeSaid`.
template <class Structure>
Structure question(const Structure* from, const char* what) {
    Structure value{};
    std::memcpy(static_cast<void*>(&value), from, std::min(sizeSaid(from, what), sizeof value));
    return value;
}

} // namespace flat
