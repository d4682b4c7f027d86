/// @file
/// The file that an AVI writer fills.
#pragma once

#include "marvo/core/handle.h"

#include <string>

/// The file that an AVI writer fills, at any offset. A writer thread that waits for the disk in here may be
/// killed: the object stays usable, and what stands at the place of that write is undefined.
///
/// Not locked: one thread at a time.
class AviOutput {
public:
    AviOutput() = default;
    virtual ~AviOutput() = default;

    AviOutput(const AviOutput&) = delete;
    AviOutput& operator=(const AviOutput&) = delete;

    /// Creates `name`, in place of a file of that name, which stays as it is when that fails; others may read
    /// it meanwhile. With `unbuffered` it passes the system's cache by. Returns a `FileIOAVI::Code`.
    virtual int create(const wchar_t* name, bool unbuffered);

    /// Bytes per sector of the volume that will hold `name`; 0 when unknown.
    virtual unsigned long sectorSize(const wchar_t* name) const;

    /// Writes at `offset`. Returns a `FileIOAVI::Code`.
    virtual int write(unsigned long long offset, const void* data, unsigned long bytes);

    /// Bytes that are free on the volume; all ones when it does not tell.
    virtual unsigned long long freeBytes() const;

    /// Whether the volume has `bytes` bytes free; true when it does not tell. When it has not, that is an
    /// error.
    bool hasRoom(unsigned long long bytes);

    /// Closes the file, which holds `size` bytes then: what a failed write has left behind them goes.
    virtual void close(unsigned long long size);

    /// Closes and deletes the file.
    void discard();

    /// Why the last operation failed, mostly in the words of the system; empty before the first failure.
    const wchar_t* error() const { return error_.c_str(); }
    /// The system's number for that.
    unsigned long systemError() const { return systemError_; }

private:
    static constexpr unsigned long long unknownPosition = ~0ull;

    int fail(int code, unsigned long systemError);

    std::wstring name_;
    vcore::handle file_;
    /// Where the system's file pointer stands; unknown behind a write that failed or whose thread was killed.
    unsigned long long position_ = unknownPosition;
    std::wstring error_;
    unsigned long systemError_ = ERROR_SUCCESS;
};
