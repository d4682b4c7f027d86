/// @file
/// Bytes in memory.
#pragma once

#include "marvo/core/platform.h"

#include <memory>

namespace vcore {

/// A growable block of bytes, owned. Null pointers count as no bytes. Not thread-safe: guarded by its owner.
class MARVO_API buf {
public:
    /// No bytes.
    buf() = default;
    /// A copy of `size` bytes; no bytes when there is no memory.
    buf(const void* data, unsigned long size) { set(data, size); }
    /// A copy; no bytes when there is no memory.
    buf(const buf& source) : buf(source.data(), source.size()) {}
    /// Takes over a copy of the bytes; no bytes when there is no memory.
    buf& operator=(const buf& source);
    ~buf() = default;

    /// Takes over a copy of `size` bytes, which may be some of its own. No bytes, and false, when there is no
    /// memory.
    bool set(const void* data, unsigned long size);
    /// Adds a copy of `size` bytes, which may be some of its own, at the end. False, and nothing added, when
    /// there is no memory.
    bool append(const void* data, unsigned long size);
    /// Cuts the bytes off at `size`, or adds zeros up to there. False, and nothing changed, when there is no
    /// memory.
    bool resize(unsigned long size);
    /// Removes the bytes and frees their memory.
    void clear();

    /// The bytes, which may be changed; null when there never were any. Valid until the size changes.
    unsigned char* data() const { return bytes_.get(); }
    /// Number of bytes.
    unsigned long size() const { return size_; }

private:
    unsigned long size_ = 0;
    unsigned long capacity_ = 0;
    std::unique_ptr<unsigned char[]> bytes_;
};

} // namespace vcore
