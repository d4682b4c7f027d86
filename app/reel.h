/// @file
/// One line of frames over several files.
#pragma once

#include "app/engine.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// A file of a reel.
struct Segment {
    std::wstring file;             ///< path; empty: its frames are in memory alone
    std::uint64_t firstFrame = 0;  ///< number in its file of its first frame
    std::uint64_t start = 0;       ///< place of its first frame in the reel; given by `add`
    std::uint64_t frames = 0;      ///< frames of it that can be shown
    std::int64_t startedAt_ms = 0; ///< time of day of its first frame; 0: not known
    std::int64_t frameDuration_100ns = 400000;
    bool rolling = false;  ///< the application's own, recycled later
    bool growing = false;  ///< being recorded now
    bool recycled = false; ///< its file is gone; its places in the reel stay empty

    /// The number in its file of a place of it, and back.
    std::uint64_t frameOf(std::uint64_t place) const { return place - start + firstFrame; }
    std::uint64_t placeOf(std::uint64_t frame) const { return frame - firstFrame + start; }
    /// Whether something of it can be shown.
    bool there() const { return frames > 0 && !recycled; }
    /// The places of its frames in the reel. Only for a segment with frames.
    FrameSpan places() const { return {start, start + frames - 1}; }
};

/// A frame of a file.
struct Place {
    std::size_t segment = 0;
    std::uint64_t frame = 0; ///< number in its file

    bool operator==(const Place&) const = default;
};

/// A stretch of time in which the camera gave nothing, or the disk took nothing.
struct Gap {
    std::uint64_t before = 0; ///< place of the first frame behind it
    std::int64_t length_ms = 0;
};

/// The files of an evening (rolling ones and recordings) in their order as one line of frames, so that steps
/// and replays go on over the border of two files. Every frame has a place in it: a number that never changes
/// and is never used again. An old recording is a reel of one file.
class Reel {
public:
    /// Adds a file behind the others; the one before does not grow any more.
    void add(Segment segment);
    /// The last file; only when there is one.
    const Segment& last() const { return segments_.back(); }
    /// How many frames of the last file can be shown. Never fewer than before.
    void grow(std::uint64_t frames);
    /// The last file does not grow any more and has so many frames that can be shown. Places that it had
    /// beyond them are not given to others.
    void close(std::uint64_t frames);
    /// A file is gone.
    void recycle(const std::wstring& file);
    /// Notes a gap.
    void addGap(Gap gap) { gaps_.push_back(gap); }

    /// All files, in order of their places.
    const std::vector<Segment>& segments() const { return segments_; }
    /// All gaps, in order of their places.
    const std::vector<Gap>& gaps() const { return gaps_; }
    /// First and last place that can be shown; nothing when there is none.
    std::optional<FrameSpan> span() const;
    /// Whether nothing can be shown.
    bool empty() const { return !span(); }
    /// The file and frame of a place; nothing for one that cannot be shown.
    std::optional<Place> find(std::uint64_t place) const;
    /// The place of a frame of a file; nothing when it is not there.
    std::optional<std::uint64_t> placeOf(const std::wstring& file, std::uint64_t frame) const;
    /// The place nearest to `place` that can be shown; only for a reel that is not empty.
    std::uint64_t nearest(std::uint64_t place) const;
    /// `frames` places further (or back), over the borders of files, cut to the reel's ends.
    std::uint64_t moved(std::uint64_t place, std::int64_t frames) const;
    /// Time of day of a place, with the gaps before it counted in.
    std::int64_t timeOfDay_ms(std::uint64_t place) const;

private:
    std::vector<Segment> segments_;
    std::uint64_t nextStart_ = 0;
    std::vector<Gap> gaps_;
};

} // namespace app
