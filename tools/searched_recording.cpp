#include "tools/searched_recording.h"

#include "tools/raw_recording.h"

#include <algorithm>
#include <array>

namespace dvrec {

namespace {

/// A part of the file in memory that moves along with who reads it.
class Window {
public:
    explicit Window(const InputFile& file) : file_(file), memory_(windowBytes) {}

    /// At least `wanted` bytes from `offset`, or what there is up to the end of the file.
    FrameBytes at(unsigned long long offset, size_t wanted) {
        if (offset < begin_ || offset + wanted > begin_ + filled_) {
            begin_ = offset;
            filled_ = file_.read(offset, memory_);
        }
        return FrameBytes(memory_).subspan(static_cast<size_t>(offset - begin_),
                                           filled_ - static_cast<size_t>(offset - begin_));
    }

private:
    static constexpr size_t windowBytes = 0x400000;

    const InputFile& file_;
    std::vector<unsigned char> memory_;
    unsigned long long begin_ = 0;
    size_t filled_ = 0;
};

/// The offset in `bytes` at which a frame begins; without one, the offset from which there could be one if
/// more followed.
size_t findStart(FrameBytes bytes) {
    constexpr std::array<unsigned char, 3> id = {0x1F, 0x07, 0x00};
    return static_cast<size_t>(std::search(bytes.begin(), bytes.end(), id.begin(), id.end()) - bytes.begin());
}

} // namespace

SearchedRecording::SearchedRecording(InputFile source, std::optional<Kind> kind, const ProgressCall& progress)
    : Recording(std::move(source)) {
    if (kind == Kind::avi) {
        takeChunks(progress);
    }
    if (places_.empty()) {
        searchBytes(progress);
    }
    kind_ = kind.value_or(guessKind());
}

/// Takes a frame that is whole and of the same size as those before.
bool SearchedRecording::take(unsigned long long offset, FrameBytes frame) {
    if (!faultOf(frame).empty() || (size_ != 0 && frame.size() != size_)) {
        ++damaged_;
        return false;
    }
    size_ = static_cast<unsigned long>(frame.size());
    places_.push_back(offset);
    return true;
}

void SearchedRecording::takeChunks(const ProgressCall& progress) {
    FileIOAVI avi;
    if (avi.open(file().name().c_str(), FileIOAVI::Trust::Nothing) != FileIOAVI::Ok) {
        return;
    }
    promised_ = avi.info().headerTotalFrames;
    Window window(file());
    for (unsigned long frame = 0; frame < avi.frames(); ++frame) {
        FileIOAVI::FramePosition position;
        avi.framePosition(frame, position);
        const unsigned long long offset = position.offset + Slot::headerBytes;
        const FrameBytes bytes = window.at(offset, position.size);
        take(offset, bytes.first(std::min<size_t>(bytes.size(), position.size)));
        progress(offset, file().size());
    }
}

void SearchedRecording::searchBytes(const ProgressCall& progress) {
    constexpr size_t idBytes = 4;
    damaged_ = 0;
    Window window(file());
    const unsigned long long end = file().size();
    unsigned long long offset = 0;
    while (offset + idBytes <= end) {
        progress(offset, end);
        const FrameBytes bytes = window.at(offset, idBytes);
        if (bytes.size() < idBytes) {
            return;
        }
        const size_t start = findStart(bytes);
        if (start + idBytes > bytes.size()) {
            offset += bytes.size() - (idBytes - 1);
            continue;
        }
        offset += start;
        const unsigned long size = frameSizeAt(file(), offset);
        const FrameBytes frame = window.at(offset, size);
        // Where a frame is damaged, the next one may begin before it would have ended.
        offset += take(offset, frame.first(std::min<size_t>(frame.size(), size))) ? size : 1;
    }
}

/// What a file is whose own begin does not tell, from what stands in front of its first frame.
Kind SearchedRecording::guessKind() const {
    if (places_.empty() || places_.front() < Slot::headerBytes) {
        return Kind::stream;
    }
    std::array<unsigned char, Slot::headerBytes + 4> head;
    const size_t got = file().read(places_.front() - Slot::headerBytes, head);
    const FrameBytes bytes = FrameBytes(head).first(got);
    if (RawRecording::isRecordStart(bytes)) {
        return Kind::raw;
    }
    const bool chunk = got == head.size() && head[2] == 'd' && (head[3] == 'c' || head[3] == 'b');
    return chunk ? Kind::avi : Kind::stream;
}

std::vector<SearchedRecording::Hole> SearchedRecording::holes() const {
    std::vector<unsigned long long> steps;
    for (size_t i = 1; i < places_.size(); ++i) {
        steps.push_back(places_[i] - places_[i - 1]);
    }
    std::nth_element(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2),
                     steps.end());
    const unsigned long long usual =
        std::max<unsigned long long>(steps.empty() ? 0 : steps[steps.size() / 2], size_);

    std::vector<Hole> holes;
    const unsigned long long headerBytes = kind_ == Kind::raw ? Slot::headerBytes : 0;
    unsigned long long expected = headerBytes;
    for (size_t i = 0; i <= places_.size() && usual > 0; ++i) {
        // An AVI file has its index behind the last frame.
        const bool atEnd = i == places_.size();
        const unsigned long long next = !atEnd               ? places_[i]
                                        : kind_ == Kind::avi ? expected
                                                             : file().size() + headerBytes;
        if (next >= expected + usual) {
            holes.push_back({static_cast<unsigned long>(i), expected,
                             static_cast<unsigned long>((next - expected) / usual)});
        }
        expected = next + usual;
    }
    return holes;
}

} // namespace dvrec
