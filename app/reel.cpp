#include "app/reel.h"

#include "app/disk.h"

#include <algorithm>
#include <utility>

namespace app {

void Reel::add(Segment segment) {
    if (!segments_.empty()) {
        segments_.back().growing = false;
    }
    segment.start = nextStart_;
    nextStart_ += segment.frames;
    segments_.push_back(std::move(segment));
}

void Reel::grow(std::uint64_t frames) {
    if (segments_.empty()) {
        return;
    }
    Segment& last = segments_.back();
    if (last.growing && frames > last.frames) {
        last.frames = frames;
        nextStart_ = last.start + frames;
    }
}

void Reel::close(std::uint64_t frames) {
    Segment& last = segments_.back();
    last.growing = false;
    last.frames = frames;
    nextStart_ = std::max(nextStart_, last.start + frames);
}

void Reel::recycle(const std::wstring& file) {
    for (Segment& segment : segments_) {
        segment.recycled = segment.recycled || samePath(segment.file, file);
    }
}

std::optional<FrameSpan> Reel::span() const {
    std::optional<FrameSpan> result;
    for (const Segment& segment : segments_) {
        if (segment.there()) {
            result = {result ? result->first : segment.places().first, segment.places().last};
        }
    }
    return result;
}

std::optional<Place> Reel::find(std::uint64_t place) const {
    for (std::size_t i = segments_.size(); i-- > 0;) {
        const Segment& segment = segments_[i];
        if (place >= segment.start) {
            if (!segment.there() || !segment.places().holds(place)) {
                // One without frames has the start of the next.
                if (segment.frames == 0) {
                    continue;
                }
                return std::nullopt;
            }
            return Place{i, segment.frameOf(place)};
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> Reel::placeOf(const std::wstring& file, std::uint64_t frame) const {
    for (const Segment& segment : segments_) {
        const bool inside =
            segment.there() && frame >= segment.firstFrame && frame - segment.firstFrame < segment.frames;
        if (inside && samePath(segment.file, file)) {
            return segment.placeOf(frame);
        }
    }
    return std::nullopt;
}

std::uint64_t Reel::nearest(std::uint64_t place) const {
    std::uint64_t best = place;
    std::uint64_t distance = noFrame;
    for (const Segment& segment : segments_) {
        if (!segment.there()) {
            continue;
        }
        const FrameSpan places = segment.places();
        const std::uint64_t candidate = std::clamp(place, places.first, places.last);
        const std::uint64_t off = candidate > place ? candidate - place : place - candidate;
        if (off < distance) {
            distance = off;
            best = candidate;
        }
    }
    return best;
}

std::uint64_t Reel::moved(std::uint64_t place, std::int64_t frames) const {
    std::uint64_t at = nearest(place);
    const bool forward = frames > 0;
    std::uint64_t rest =
        forward ? static_cast<std::uint64_t>(frames) : 0 - static_cast<std::uint64_t>(frames);
    while (rest > 0) {
        const FrameSpan here = segments_[find(at)->segment].places();
        const std::uint64_t left = forward ? here.last - at : at - here.first;
        if (rest <= left) {
            return forward ? at + rest : at - rest;
        }
        at = forward ? here.last : here.first;
        // Over the border: the nearest place beyond it, when there is one.
        std::optional<std::uint64_t> beyond;
        for (const Segment& segment : segments_) {
            if (!segment.there()) {
                continue;
            }
            if (forward && segment.start > at && (!beyond || segment.start < *beyond)) {
                beyond = segment.places().first;
            }
            if (!forward && segment.places().last < at && (!beyond || segment.places().last > *beyond)) {
                beyond = segment.places().last;
            }
        }
        if (!beyond) {
            return at;
        }
        rest -= left + 1;
        at = *beyond;
    }
    return at;
}

std::int64_t Reel::timeOfDay_ms(std::uint64_t place) const {
    const std::optional<Place> found = find(place);
    if (!found || segments_[found->segment].startedAt_ms == 0) {
        return 0;
    }
    const Segment& segment = segments_[found->segment];
    std::int64_t time = segment.startedAt_ms + static_cast<std::int64_t>(place - segment.start) *
                                                   segment.frameDuration_100ns / 10000;
    for (const Gap& gap : gaps_) {
        time += gap.before >= segment.start && gap.before <= place ? gap.length_ms : 0;
    }
    return time;
}

} // namespace app
