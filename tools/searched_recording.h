/// @file
/// Frames that are searched for.
#pragma once

#include "tools/recording.h"

#include <functional>
#include <optional>
#include <vector>

namespace dvrec {

/// The undamaged frames of a damaged file. Of AVI files the engine's own search is taken, which knows their
/// chunks; where that finds nothing, and in all other files, a frame is whatever looks like one, at any byte.
class SearchedRecording final : public Recording {
public:
    /// A run of bytes between frames in which there was room for at least one more.
    struct Hole {
        unsigned long frame;       ///< number of the next frame found behind it
        unsigned long long offset; ///< where it begins
        unsigned long lost;        ///< frames for which there was room, about
    };

    /// Searches the file, which is of the kind `kind` if that is known. `progress` is told the bytes done and
    /// in all.
    SearchedRecording(InputFile file, std::optional<Kind> kind,
                      const std::function<void(unsigned long long, unsigned long long)>& progress);

    Kind kind() const override { return kind_; }
    unsigned long frames() const override { return static_cast<unsigned long>(places_.size()); }
    Place place(unsigned long frame) const override { return {places_[frame], size_}; }

    /// Frames that begin as such and are damaged, cut off, or of another system than the first; they are left
    /// out.
    unsigned long damaged() const { return damaged_; }
    /// Frames that the file's headers promise; 0 when they do not.
    unsigned long promised() const { return promised_; }
    /// Where frames are missing.
    std::vector<Hole> holes() const;

private:
    using ProgressCall = std::function<void(unsigned long long, unsigned long long)>;

    void takeChunks(const ProgressCall& progress);
    void searchBytes(const ProgressCall& progress);
    bool take(unsigned long long offset, FrameBytes frame);
    Kind guessKind() const;

    Kind kind_ = Kind::stream;
    std::vector<unsigned long long> places_;
    unsigned long size_ = 0;
    unsigned long damaged_ = 0;
    unsigned long promised_ = 0;
};

/// Searches a damaged recording for its frames; `progress` is told the bytes done and in all. Throws the
/// `Failure` when the file cannot be opened, is empty, or there is no frame in it.
std::unique_ptr<SearchedRecording>
openDamaged(const std::wstring& name,
            const std::function<void(unsigned long long, unsigned long long)>& progress);

} // namespace dvrec
