/// @file
/// Plain DV streams.
#pragma once

#include "tools/recording.h"

namespace dvrec {

/// DV frames of one size, one behind the other. The size is taken from the first frame.
class StreamRecording final : public Recording {
public:
    explicit StreamRecording(InputFile file);

    Kind kind() const override { return Kind::stream; }
    unsigned long frames() const override { return frames_; }
    Place place(unsigned long frame) const override {
        return {static_cast<unsigned long long>(frame) * size_, size_};
    }
    /// Bytes behind the last whole frame.
    unsigned long long tail() const { return file().size() - place(frames_).offset; }

private:
    unsigned long size_ = 0;
    unsigned long frames_ = 0;
};

} // namespace dvrec
