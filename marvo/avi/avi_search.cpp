#include "marvo/avi/avi_search.h"

#include "marvo/dv/layout.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned long blockBytes = 0x40000;

/// Of a chunk's id, the bytes in front of the "d" of "dc" and "db": the number of the stream.
constexpr unsigned long numberBytes = 2;

/// Blocks overlap by the bytes of an id but one, so that every id is whole in one of them.
constexpr unsigned long overlap = 3;

/// A chunk header and the start of a frame.
struct Signature {
    riff::ChunkHeader header;
    unsigned char start[vdv::startBytes];
};

constexpr unsigned long signatureBytes = sizeof(riff::ChunkHeader) + vdv::startBytes;

} // namespace

void AviSearch::find() {
    index_.clear();
    unsigned long long walked = 0; // the end of the last whole frame
    unsigned long long position = next(0, source_.size());
    while (position < source_.size()) {
        std::uint32_t size = 0;
        isFrameAt(position, size);
        const unsigned long long end = position + sizeof(riff::ChunkHeader) + riff::padded(size);
        // Where bytes are missing, the next frame begins within this one, which then is not whole.
        const bool whole = chunkFollows(end) || (next(position + 1, end) >= end && endsWell(position, size));
        if (whole) {
            header_.assumeVideo(position, source_);
            index_.add(position, size);
            walked = end;
        } else {
            broken_.push_back(position);
        }
        tell(position);
        position = next(whole ? end : position + 1, source_.size());
    }
    findCutFrame(walked);
}

/// Looks behind the last whole frame, which ends at `begin`, for one that the end of the file cuts off: of a
/// recorder that was killed. One of which the file holds nothing but the header does not count.
void AviSearch::findCutFrame(unsigned long long begin) {
    RiffWalker walker(source_, begin);
    RiffChunk chunk;
    RiffWalker::Step step = walker.next(chunk);
    while (step == RiffWalker::Step::Chunk) {
        if (chunk.isList()) {
            walker.enter(chunk);
        }
        step = walker.next(chunk);
    }
    if (step == RiffWalker::Step::Cut && chunk.data() < source_.size() &&
        isFrameHeader(chunk.id, chunk.size) && (broken_.empty() || broken_.back() < chunk.offset)) {
        broken_.push_back(chunk.offset);
    }
}

/// Whether a chunk with this header can hold a frame of the video.
bool AviSearch::isFrameHeader(std::uint32_t id, std::uint32_t size) const {
    const bool rightSize = vdv::isFrameSize(size) || (header_.hasVideo && size == header_.format.sizeImage);
    const bool rightId = header_.hasVideo ? header_.isFrame(id) : AviHeader::isAnyFrame(id);
    return rightId && rightSize && vdv::mayBeFrameSize(size);
}

/// Whether a whole frame stands at `offset`; `size` is then the bytes of its data.
bool AviSearch::isFrameAt(unsigned long long offset, std::uint32_t& size) {
    Signature found{};
    if (!source_.peek(offset, &found, signatureBytes)) {
        return false;
    }
    size = found.header.size;
    return isFrameHeader(found.header.id, size) && vdv::isFrameStart(found.start) &&
           size <= source_.size() - offset - sizeof(riff::ChunkHeader);
}

/// Whether a whole chunk, a list, or nothing stands at `offset`.
bool AviSearch::chunkFollows(unsigned long long offset) {
    RiffWalker walker(source_, offset);
    RiffChunk chunk;
    const RiffWalker::Step step = walker.next(chunk);
    return step == RiffWalker::Step::Chunk || step == RiffWalker::Step::End;
}

/// Whether the last sequence of the frame at `offset` begins where it should. When bytes are missing it does
/// not.
bool AviSearch::endsWell(unsigned long long offset, std::uint32_t size) {
    const unsigned long last = vdv::sequences(size) - 1;
    unsigned char start[vdv::startBytes] = {};
    return source_.peek(offset + sizeof(riff::ChunkHeader) + last * vdv::sequenceBytes, start,
                        sizeof(start)) &&
           vdv::isSequenceStart(start, last);
}

/// Has a block with more than an overlap from `begin` on, unless the file ends there. The candidates in a
/// block lead back into it, so it is kept.
void AviSearch::readBlock(unsigned long long begin) {
    if (begin >= blockOffset_ && begin + overlap < blockOffset_ + blockCount_) {
        return;
    }
    tell(begin);
    block_.resize(blockBytes);
    blockOffset_ = begin;
    blockCount_ = source_.read(begin, block_.data(), blockBytes);
}

void AviSearch::tell(unsigned long long done) const {
    if (progress_) {
        progress_(done, source_.size());
    }
}

unsigned long long AviSearch::next(unsigned long long begin, unsigned long long end) {
    std::uint32_t size = 0;
    if (begin < end && isFrameAt(begin, size)) {
        return begin;
    }
    while (begin < end) {
        readBlock(begin);
        const auto skipped = static_cast<unsigned long>(begin - blockOffset_);
        const auto got = static_cast<unsigned long>(
            std::min<unsigned long long>(blockCount_ - skipped, end - begin + overlap));
        if (got <= overlap) {
            return end;
        }
        const unsigned char* const first = block_.data() + skipped;
        const unsigned char* const last = first + got - 1;
        for (const unsigned char* at = first + numberBytes; at < last; ++at) {
            at = static_cast<const unsigned char*>(std::memchr(at, 'd', static_cast<size_t>(last - at)));
            if (!at) {
                break;
            }
            std::uint32_t id = 0;
            std::memcpy(&id, at - numberBytes, sizeof(id));
            const unsigned long long offset = begin + static_cast<unsigned long>(at - first) - numberBytes;
            if (AviHeader::isAnyFrame(id) && isFrameAt(offset, size)) {
                return offset;
            }
        }
        begin += got - overlap;
    }
    return end;
}
