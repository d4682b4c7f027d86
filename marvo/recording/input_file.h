/// @file
/// A file that is read at any offset.
#pragma once

#include "marvo/core/handle.h"

#include <cstddef>

namespace recording {

/// An existing file, open for reading through the system's cache while others may write it.
///
/// Not locked: one thread at a time, but for `close`. A worker thread may be killed while the system reads.
class InputFile {
public:
    /// Opens it, in place of the one that is open; false when the system refuses (`GetLastError`).
    bool open(const wchar_t* name);
    /// Whether a file is open.
    bool opened() const { return static_cast<bool>(file_); }
    /// Closes it; also beside a `read` on another thread, which fails then.
    void close() { file_.reset(); }

    /// Bytes of the file at this moment; 0 when none is open.
    unsigned long long size() const;
    /// Reads from a byte offset as much as there is of `bytes` bytes; returns how many that were.
    std::size_t read(unsigned long long offset, void* to, std::size_t bytes) const;

    /// Whether somebody has the file `name` open for writing.
    static bool isBeingWritten(const wchar_t* name);
    /// Whether both names lead to the same existing file, by whatever path.
    static bool areSame(const wchar_t* one, const wchar_t* other);

private:
    vcore::handle file_;
};

} // namespace recording
