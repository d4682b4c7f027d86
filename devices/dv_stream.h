/// @file
/// A raw .dv file.
#pragma once

#include "devices/dv_system.h"
#include "devices/file_handle.h"

#include <vector>

namespace devices {

/// A file of DV frames one after the other, without a header of its own. The first frame's header names the
/// system; a part of a frame at the end does not count. Not for several threads at once.
class dv_stream {
public:
    /// Opens a file. Failure: the Windows error for a file that cannot be read, VFW_E_INVALID_FILE_FORMAT for
    /// one that does not begin with a whole DV frame; the stream is then empty.
    HRESULT open(const std::wstring& path);
    /// Takes the frames into memory if they need at most `limit` bytes and there is room; otherwise they are
    /// read when asked for. Not required.
    void load(uint64_t limit);

    /// Null when no file is open.
    const dv_system* system() const { return system_; }
    uint64_t frames() const { return frames_; }
    /// Copies a frame's bytes (the system's frame size) to `out`; counting goes on from the file's start
    /// again after its last frame. False when it cannot be read.
    bool read(uint64_t frame, uint8_t* out) const;

private:
    file_handle file_;
    const dv_system* system_ = nullptr;
    uint64_t frames_ = 0;
    std::vector<uint8_t> bytes_; // empty when the frames are read from the file
};

} // namespace devices
