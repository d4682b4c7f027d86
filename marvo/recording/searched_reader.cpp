#include "marvo/recording/searched_reader.h"

#include "marvo/core/text.h"
#include "marvo/dv/inspection.h"
#include "marvo/recording/stream_reader.h"

#include <algorithm>
#include <array>

namespace recording {

namespace {

/// A part of the file in memory that moves along with who reads it.
class Window {
public:
    explicit Window(const InputFile& file) : file_(file), memory_(windowBytes) {}

    /// At least `wanted` bytes from `offset`, or what there is up to the end of the file.
    vdv::FrameBytes at(unsigned long long offset, std::size_t wanted) {
        if (offset < start_ || offset + wanted > start_ + filled_) {
            start_ = offset;
            filled_ = file_.read(offset, memory_.data(), memory_.size());
        }
        const auto skipped = static_cast<std::size_t>(offset - start_);
        return vdv::FrameBytes(memory_).subspan(skipped, filled_ - skipped);
    }

private:
    static constexpr std::size_t windowBytes = 0x400000;

    const InputFile& file_;
    std::vector<unsigned char> memory_;
    unsigned long long start_ = 0;
    std::size_t filled_ = 0;
};

/// The offset in `bytes` at which a frame begins; without one, the offset from which there could be one if
/// more followed.
std::size_t findStart(vdv::FrameBytes bytes) {
    constexpr std::array<unsigned char, vdv::startBytes> id = {0x1F, 0x07, 0x00};
    static_assert(vdv::isFrameStart(id));
    return static_cast<std::size_t>(std::search(bytes.begin(), bytes.end(), id.begin(), id.end()) -
                                    bytes.begin());
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
    if (row && row->find && row->find(name, found)) {
        reader->takeFound(found, progress);
    }
    if (reader->places_.empty()) {
        reader->searchBytes(progress);
    }
    reader->row_ = row ? row : &reader->guessRow();
    return reader;
}

/// Takes a frame that is whole and of the same size as those before.
bool SearchedReader::take(unsigned long long offset, vdv::FrameBytes frame) {
    if (!vdv::faultOf(frame).empty() || (frameSize_ != 0 && frame.size() != frameSize_)) {
        ++damaged_;
        return false;
    }
    frameSize_ = static_cast<unsigned long>(frame.size());
    places_.push_back(offset);
    return true;
}

void SearchedReader::takeFound(const FoundFrames& found, const ProgressCall& progress) {
    promised_ = found.promised;
    Window window(file());
    for (const Place& place : found.places) {
        const vdv::FrameBytes bytes = window.at(place.offset, place.size);
        take(place.offset, bytes.first(std::min<std::size_t>(bytes.size(), place.size)));
        progress(place.offset, fileBytes());
    }
}

void SearchedReader::searchBytes(const ProgressCall& progress) {
    constexpr std::size_t idBytes = vdv::startBytes + 1;
    damaged_ = 0;
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
        const unsigned long size = StreamReader::frameSizeAt(file(), offset);
        const vdv::FrameBytes frame = window.at(offset, size);
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

std::vector<SearchedReader::Hole> SearchedReader::holes() const {
    std::vector<unsigned long long> steps;
    for (std::size_t i = 1; i < places_.size(); ++i) {
        steps.push_back(places_[i] - places_[i - 1]);
    }
    std::nth_element(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2),
                     steps.end());
    const unsigned long long usual =
        std::max<unsigned long long>(steps.empty() ? 0 : steps[steps.size() / 2], frameSize_);

    std::vector<Hole> holes;
    unsigned long long expected = row_->firstFrame;
    for (std::size_t i = 0; i <= places_.size() && usual > 0; ++i) {
        const bool atEnd = i == places_.size();
        const unsigned long long end = row_->framesToEnd ? fileBytes() + row_->firstFrame : expected;
        const unsigned long long next = atEnd ? end : places_[i];
        if (next >= expected + usual) {
            holes.push_back({static_cast<unsigned long>(i), expected,
                             static_cast<unsigned long>((next - expected) / usual)});
        }
        expected = next + usual;
    }
    return holes;
}

} // namespace recording
