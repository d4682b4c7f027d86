/// @file
/// The interface of things that hold bytes at positions.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/core/vobject.h"

namespace vcore {

/// A store of bytes with a current position, which can be opened by name. Not copyable. Not thread-safe:
/// guarded by its owner.
class MARVO_API iostore : public virtual vObject {
public:
    /// Opens the store of that name, or of the name it already has when `name` is null.
    virtual bool open(const wchar_t* name) = 0;
    /// Closes the store; nothing happens when it is not open.
    virtual void close() = 0;
    /// Reads at most `n` bytes at the position and moves it on. `done`, when given, receives the bytes read.
    /// False when nothing could be read; without `done` also when fewer than `n` bytes were read.
    virtual bool read(void* data, unsigned long n, unsigned long* done) = 0;
    /// Writes `n` bytes at the position and moves it on. `done`, when given, receives the bytes written.
    /// False unless all were written.
    virtual bool write(const void* data, unsigned long n, unsigned long* done) = 0;
    /// Bytes from the position to the end.
    virtual unsigned long long remain() const = 0;
    /// Whether the store is open.
    virtual bool opened() const = 0;
    /// Whether the store holds 16-bit text.
    virtual bool unicode() const = 0;
    /// Makes the position the end of the store.
    virtual bool truncate() = 0;
    /// Copies everything from the position to the end to the position of another store. False when a
    /// transfer fails (both positions are then behind what was copied) and for the store itself.
    virtual bool copyTo(iostore& destination) = 0;
    /// Moves the position to an absolute byte offset, which may lie beyond the end.
    virtual bool seek(unsigned long long offset) = 0;

protected:
    /// Moves the position on by `n` bytes.
    virtual void _addPos(unsigned long n) = 0;
    /// The nearest offset that the store can address.
    virtual unsigned long long _normAddr(unsigned long long offset) const = 0;

public:
    iostore() = default;
    ~iostore() override = default;
};

} // namespace vcore
