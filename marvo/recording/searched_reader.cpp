#include "marvo/recording/searched_reader.h"

#include "marvo/core/text.h"
#include "marvo/dv/inspection.h"
#include "marvo/dv/time_code.h"
#include "marvo/recording/stream_reader.h"

#include <algorithm>
#include <cstring>

namespace recording {

namespace {

/// A part of the file in memory that moves along with who reads it.
class Window {
public:
    explicit Window(const InputFile& file)
        : file_(file), memory_(static_cast<std::size_t>(std::min(windowBytes, file.size() + 1))) {}

    /// At least `wanted` bytes from `offset`, or what there is up to the end of the file.
    vdv::FrameBytes at(unsigned long long offset, std::size_t wanted) {
        const bool ends = filled_ < memory_.size(); // with the file
        if (offset < start_ || offset > start_ + filled_ ||
            (offset + wanted > start_ + filled_ && !(ends && filled_ > 0))) {
            start_ = offset;
            filled_ = file_.read(offset, memory_.data(), memory_.size());
        }
        const auto skipped = static_cast<std::size_t>(offset - start_);
        return vdv::FrameBytes(memory_).subspan(skipped, filled_ - skipped);
    }

private:
    static constexpr unsigned long long windowBytes = 0x400000;

    const InputFile& file_;
    std::vector<unsigned char> memory_;
    unsigned long long start_ = 0;
    std::size_t filled_ = 0;
};

/// The offset in `bytes` at which a frame begins; without one, the offset from which there could be one if
/// more followed.
std::size_t findStart(vdv::FrameBytes bytes) {
    constexpr unsigned char id[vdv::startBytes] = {0x1F, 0x07, 0x00};
    static_assert(vdv::isFrameStart(id));
    const unsigned char* at = bytes.data();
    const unsigned char* const last = at + bytes.size() - std::min<std::size_t>(bytes.size(), sizeof(id) - 1);
    // Byte by byte the most that a search does would take several times as long.
    while (at < last && (at = static_cast<const unsigned char*>(
                             std::memchr(at, id[0], static_cast<std::size_t>(last - at)))) != nullptr) {
        if (std::memcmp(at, id, sizeof(id)) == 0) {
            return static_cast<std::size_t>(at - bytes.data());
        }
        ++at;
    }
    return bytes.size();
}

} // namespace

std::unique_ptr<SearchedReader> SearchedReader::open(const wchar_t* name, const ProgressCall& progress,
                                                     std::wstring& error) {
    std::unique_ptr<SearchedReader> reader(new SearchedReader(name));
    if (!reader->file().opened()) {
        error = vcore::systemMessage(GetLastError());
        return nullptr;
    }
    const KindRow* row = rowOfContent(reader->file());
    if (!row && rowOfName(name).find) {
        row = &rowOfName(name);
    }
    FoundFrames found;
    if (row && row->find && row->find(name, found, progress)) {
        reader->takeFound(found, progress);
    }
    if (reader->places_.empty()) {
        reader->searchBytes(progress);
    }
    std::sort(reader->broken_.begin(), reader->broken_.end());
    reader->row_ = row ? row : &reader->guessRow();
    return reader;
}

/// Takes a frame that is whole and of the same size as those before.
bool SearchedReader::take(unsigned long long offset, vdv::FrameBytes frame) {
    if (!vdv::faultOf(frame).empty() || (frameSize_ != 0 && frame.size() != frameSize_)) {
        broken_.push_back(offset);
        return false;
    }
    frameSize_ = static_cast<unsigned long>(frame.size());
    places_.push_back(offset);
    return true;
}

void SearchedReader::takeFound(const FoundFrames& found, const ProgressCall& progress) {
    promised_ = found.promised;
    broken_ = found.broken;
    Window window(file());
    for (const Place& place : found.places) {
        const vdv::FrameBytes bytes = window.at(place.offset, place.size);
        take(place.offset, bytes.first(std::min<std::size_t>(bytes.size(), place.size)));
        progress(place.offset, fileBytes());
    }
}

void SearchedReader::searchBytes(const ProgressCall& progress) {
    constexpr std::size_t idBytes = vdv::startBytes + 1;
    broken_.clear();
    Window window(file());
    const unsigned long long end = fileBytes();
    unsigned long long offset = 0;
    while (offset + idBytes <= end) {
        progress(offset, end);
        const vdv::FrameBytes bytes = window.at(offset, idBytes);
        if (bytes.size() < idBytes) {
            return;
        }
        const std::size_t start = findStart(bytes);
        if (start + idBytes > bytes.size()) {
            offset += bytes.size() - (idBytes - 1);
            continue;
        }
        offset += start;
        const vdv::FrameBytes frame = window.at(offset, StreamReader::largestFrame + idBytes);
        const unsigned long size = StreamReader::frameSizeOf(frame);
        // Where a frame is damaged, the next one may begin before it would have ended.
        offset += take(offset, frame.first(std::min<std::size_t>(frame.size(), size))) ? size : 1;
    }
}

/// What a file is whose own start does not tell, from what stands in front of its first frame.
const KindRow& SearchedReader::guessRow() const {
    unsigned char head[headerBytes + vdv::startBytes];
    std::size_t got = 0;
    if (!places_.empty() && places_.front() >= headerBytes) {
        got = file().read(places_.front() - headerBytes, head, sizeof head);
    }
    for (const KindRow& row : kinds()) {
        if (row.standsInFront && row.standsInFront(head, got)) {
            return row;
        }
    }
    return rowOf(Kind::stream);
}

bool SearchedReader::place(unsigned long long frame, Place& place) const {
    if (frame >= places_.size()) {
        return false;
    }
    place = {places_[static_cast<std::size_t>(frame)], frameSize_};
    return true;
}

bool SearchedReader::read(unsigned long long frame, RecordBuffer& buffer) {
    if (buffer.setFrameBytes(frameSize_) && readHead(frame, buffer.frame(), frameSize_) == frameSize_) {
        return true;
    }
    error_ = L"it is not there as a whole";
    return false;
}

/// The median of the distances from frame to frame, without those in which there is room for another; the
/// distance on usual volumes when there is no other.
unsigned long long SearchedReader::usualStep() const {
    constexpr unsigned long long usualSector = 512;
    const unsigned long long inFront = row_->firstFrame;
    std::vector<unsigned long long> steps;
    for (std::size_t i = 1; i < places_.size(); ++i) {
        const unsigned long long step = places_[i] - places_[i - 1];
        if (step < 2 * frameSize_) {
            steps.push_back(step);
        }
    }
    if (steps.empty()) {
        const unsigned long long padding = (usualSector - (inFront + frameSize_) % usualSector) % usualSector;
        return frameSize_ + (inFront != 0 ? inFront + padding : 0);
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return *middle;
}

std::size_t SearchedReader::brokenBetween(unsigned long long begin, unsigned long long end) const {
    const auto first = std::lower_bound(broken_.begin(), broken_.end(), begin);
    return static_cast<std::size_t>(std::lower_bound(first, broken_.end(), std::max(begin, end)) - first);
}

/// Frames that the camera counted between two. Nothing when one of them has no time code, or when the count
/// went back or by more than half a day, as where a camera was set or another tape put in.
std::optional<unsigned long> SearchedReader::countedBetween(std::size_t before, std::size_t after) const {
    std::vector<unsigned char> bytes(frameSize_);
    const auto codeOf = [&](std::size_t frame) {
        return vdv::TimeCode::read(vdv::FrameBytes(bytes).first(readHead(frame, bytes.data(), frameSize_)));
    };
    const std::optional<vdv::TimeCode> first = codeOf(before);
    const std::optional<vdv::TimeCode> second = codeOf(after);
    if (!first || !second) {
        return {};
    }
    const unsigned rate = vdv::systemOf(frameSize_)->countedRate;
    const unsigned long day = vdv::TimeCode{24, 0, 0, 0, first->dropFrame}.count(rate);
    const unsigned long step = (second->count(rate) + day - first->count(rate)) % day;
    return step != 0 && step < day / 2 ? std::optional(step - 1) : std::nullopt;
}

/// What is missing between the place `begin`, at which frame `frame` should stand, and where it stands (or
/// the file ends).
SearchedReader::Hole SearchedReader::holeBefore(std::size_t frame, unsigned long long begin,
                                                unsigned long long usual) const {
    const bool rigid = row_->framesToEnd;
    const bool atEnd = frame == places_.size();
    const unsigned long long end = !atEnd ? places_[frame] : rigid ? fileBytes() + row_->firstFrame : begin;
    const unsigned long long room = end > begin ? end - begin : 0;
    // In front of the first frame, records are counted back from it.
    const unsigned long long rest = room % usual;
    const unsigned long long odd = frame == 0 ? begin : begin + room - rest;
    const std::size_t broken = brokenBetween(begin, atEnd ? ~0ull : end);
    // At the end of the file the first byte of a frame tells, though it takes more to see that it is one.
    const bool oddFrame =
        rigid && atEnd ? rest > row_->firstFrame : brokenBetween(odd, atEnd ? ~0ull : odd + rest) != 0;
    const auto fitting = static_cast<unsigned long>(room / usual);
    Hole hole{static_cast<unsigned long>(frame), begin, fitting + (oddFrame ? 1 : 0), Counted::room, 0};
    // What is cut off at the end of the file is the start of one more record.
    if (rigid && end >= begin && (rest == 0 || atEnd)) {
        hole.counted = Counted::records;
    } else if (frame != 0 && !atEnd && (rigid ? end != begin : fitting != 0 || broken != 0)) {
        const std::optional<unsigned long> counted = countedBetween(frame - 1, frame);
        // More than there is room for is a camera that was stopped, unless bytes of the file are missing.
        if (counted && (rigid || broken != 0 || *counted <= fitting + 1)) {
            hole.lost = *counted;
            hole.counted = Counted::timeCode;
        }
    }
    hole.damaged = std::min(hole.lost, static_cast<unsigned long>(broken));
    return hole;
}

std::vector<SearchedReader::Hole> SearchedReader::holes() const {
    const unsigned long long usual = usualStep();
    std::vector<Hole> holes;
    unsigned long long expected = row_->firstFrame;
    unsigned long long accounted = places_.size();
    for (std::size_t i = 0; i <= places_.size() && usual > 0; ++i) {
        Hole hole = holeBefore(i, expected, usual);
        accounted += hole.lost;
        if (i == places_.size() && promised_ > accounted) {
            hole.lost += static_cast<unsigned long>(promised_ - accounted);
            hole.counted = Counted::header;
        }
        if (hole.lost > 0) {
            holes.push_back(hole);
        }
        expected = i < places_.size() ? places_[i] + usual : 0;
    }
    return holes;
}

} // namespace recording
