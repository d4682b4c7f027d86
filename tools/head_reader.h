/// @file
/// What the camera noted in the frames of a recording.
#pragma once

#include "marvo/dv/layout.h"
#include "marvo/recording/reader.h"

#include <vector>

namespace dvrec {

/// Reads the starts of frames, as much as is needed for what the camera noted.
class HeadReader {
public:
    /// For a recording, which must live longer.
    explicit HeadReader(const recording::Reader& from);

    /// The start of a frame, with time code and clock in it if they are in the frame at all; valid until the
    /// next call. Empty when there is no such frame.
    vdv::FrameBytes head(unsigned long long frame) { return read(frame, needed_); }
    /// The whole frame.
    vdv::FrameBytes whole(unsigned long long frame) { return read(frame, memory_.size()); }

private:
    vdv::FrameBytes read(unsigned long long frame, size_t bytes);

    const recording::Reader& from_;
    std::vector<unsigned char> memory_;
    size_t needed_ = 0;
};

} // namespace dvrec
