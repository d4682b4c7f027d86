/// @file
/// The bytes of frames, wherever they are.
#pragma once

#include "marvo.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace app {

/// A frame of a file.
struct FrameAddress {
    std::wstring file; ///< whole path; empty: the ring alone has it
    std::uint64_t frame = 0;

    bool operator==(const FrameAddress&) const = default;
};

/// Reads frames: from the engine's memory as long as it has them, else from their files. The newest few files
/// stay open. One thread at a time; each reader best has a source of its own.
class FrameSource {
public:
    /// Reads a frame; false when it cannot be had. `bytes` is made as large as the frame.
    bool read(const FrameAddress& address, std::vector<unsigned char>& bytes);
    /// Closes the files, so that they can be deleted.
    void close() { files_.clear(); }

private:
    struct File {
        std::wstring name;
        dvRecording recording;
    };

    bool readRing(const FrameAddress& address, std::vector<unsigned char>& bytes);
    dvRecording* open(const std::wstring& name);

    vvideo::dvFrame ringFrame_;
    std::vector<std::unique_ptr<File>> files_; // the newest used one first
};

} // namespace app
