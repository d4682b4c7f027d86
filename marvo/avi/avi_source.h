/// @file
/// The file that an AVI reader reads.
#pragma once

#include "marvo/core/handle.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

/// A file that is read at any offset, also beyond 2 GiB and while another process writes it. Nothing is read
/// that is not asked for, except by `peek`.
///
/// Not locked: one thread at a time. A worker thread may be killed while the system reads.
class AviSource {
public:
    /// Opens `name`, which others may read and write meanwhile. False when the system refuses
    /// (`GetLastError`).
    bool open(const wchar_t* name);

    /// Bytes in the file when it was opened or `updateSize` was called last.
    unsigned long long size() const { return size_; }

    /// Asks the system for the size again and forgets what `peek` has read.
    void updateSize();

    /// Reads up to `bytes` bytes at `offset`, which is below 2^63, with one seek and one read. Returns how
    /// many there were; 0 also when the system refuses, whose error is in `*error` then (0 at the end of the
    /// file).
    unsigned long read(unsigned long long offset, void* dest, unsigned long bytes,
                       unsigned long* error = nullptr) const;

    /// Copies a small structure out of a window that is read ahead. Several are kept, for a search looks at
    /// some places in turn that all move on. False unless all of it is there.
    bool peek(unsigned long long offset, void* dest, unsigned long bytes);

    /// Keeps the first `mostKept` of bytes that were read at `offset`, for `peek`. They are to stand behind
    /// all that are kept; others are not kept.
    void keep(unsigned long long offset, const unsigned char* data, unsigned long bytes);
    /// Whether `peek` has these bytes without reading.
    bool has(unsigned long long offset, unsigned long bytes) const { return held(offset, bytes) != nullptr; }
    /// Forgets what is kept.
    void forget() { kept_.clear(); }

    /// Calls `function` with each of `count` structures from `offset` on, which are read in large blocks,
    /// until it returns false. False then, and when the file ends before.
    template <class Record, class Function>
    bool forEachRecord(unsigned long long offset, std::uint32_t count, Function function) {
        constexpr std::uint32_t perBlock = 0x40000 / sizeof(Record);
        std::vector<Record> block(std::min(count, perBlock));
        while (count > 0) {
            const std::uint32_t now = std::min(count, perBlock);
            const auto bytes = static_cast<unsigned long>(now * sizeof(Record));
            if (const unsigned char* known = held(offset, bytes)) {
                std::memcpy(block.data(), known, bytes);
            } else if (read(offset, block.data(), bytes) != bytes) {
                return false;
            }
            for (std::uint32_t i = 0; i < now; ++i) {
                if (!function(block[i])) {
                    return false;
                }
            }
            offset += bytes;
            count -= now;
        }
        return true;
    }

    /// How many bytes `peek` reads at once.
    void readAhead(unsigned long bytes) { readAhead_ = bytes; }

private:
    /// Enough for a chunk or list header.
    static constexpr unsigned long mostKept = 16;
    /// One for the frame that is looked at, and for each size that a frame can have one for its end and one
    /// for its last sequence.
    static constexpr std::size_t mostWindows = 16;

    struct Window {
        unsigned long long offset = 0;
        unsigned long count = 0;
        std::vector<unsigned char> bytes;
    };

    struct Kept {
        unsigned long long offset;
        unsigned long count;
        unsigned char bytes[mostKept];
    };

    const unsigned char* held(unsigned long long offset, unsigned long bytes) const;

    vcore::handle file_;
    unsigned long long size_ = 0;
    unsigned long readAhead_ = 0x1000;
    std::array<Window, mostWindows> windows_; ///< the one read last in front
    std::vector<Kept> kept_;                  ///< by offset
};
