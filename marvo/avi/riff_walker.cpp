#include "marvo/avi/riff_walker.h"

#include <algorithm>

RiffWalker::RiffWalker(AviSource& source, unsigned long long begin, unsigned long long end)
    : source_(source), position_(begin), end_(std::min(end, source.size())) {}

bool RiffWalker::isId(std::uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t character = id >> shift & 0xFF;
        if (character < 0x20 || character > 0x7E) {
            return false;
        }
    }
    return true;
}

bool RiffWalker::startsChunk(unsigned long long offset) {
    riff::ChunkHeader header{};
    return end_ >= sizeof(header) && offset <= end_ - sizeof(header) &&
           source_.peek(offset, &header, sizeof(header)) && isId(header.id);
}

/// Some programs leave out the byte of padding behind a chunk of odd size.
void RiffWalker::skipMissingPadding() {
    if (odd_ && !startsChunk(position_) && startsChunk(position_ - 1)) {
        --position_;
    }
    odd_ = false;
}

RiffWalker::Step RiffWalker::next(RiffChunk& chunk) {
    skipMissingPadding();
    riff::ListHeader header{};
    if (position_ > end_ || end_ - position_ < sizeof(riff::ChunkHeader) ||
        !source_.peek(position_, &header, sizeof(riff::ChunkHeader))) {
        return Step::End;
    }
    if (!isId(header.id)) {
        return Step::Garbage;
    }
    chunk = {position_, header.id, header.size, 0};
    if (chunk.isList()) {
        if (end_ - position_ < sizeof(header) || !source_.peek(position_, &header, sizeof(header))) {
            return Step::Cut;
        }
        chunk.type = header.type;
    } else if (chunk.end() > end_) {
        return Step::Cut;
    }
    position_ = chunk.paddedEnd();
    odd_ = (chunk.size & 1) != 0;
    return Step::Chunk;
}
