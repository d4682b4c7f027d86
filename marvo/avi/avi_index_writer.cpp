#include "marvo/avi/avi_index_writer.h"

#include <cstring>

using riff::fourcc;

namespace {

constexpr std::uint32_t frameTag = fourcc("00dc");
constexpr std::uint32_t keyFrame = 0x10;
constexpr std::uint32_t headBytes = sizeof(riff::ChunkHeader);

riff::IndexHeader standardHeader(std::uint32_t entries, std::uint64_t base) {
    riff::IndexHeader header{};
    header.longsPerEntry = sizeof(riff::StandardIndexEntry) / sizeof(std::uint32_t);
    header.type = 1;
    header.entriesInUse = entries;
    header.chunkId = frameTag;
    header.baseOffsetLow = static_cast<std::uint32_t>(base);
    header.baseOffsetHigh = static_cast<std::uint32_t>(base >> 32);
    return header;
}

} // namespace

bool AviIndexWriter::init(std::uint32_t standardChunkSize, std::uint32_t standardRoom,
                          std::uint32_t legacyRoom, std::uint32_t sector) {
    standardChunkSize_ = standardChunkSize;
    standardRoom_ = standardRoom;
    legacyRoom_ = legacyRoom;
    sector_ = sector;
    standard_ = allocSectors(standardChunkSize);
    tail_ = allocSectors(static_cast<unsigned long>(tailBytes(legacyRoom)));
    if (!standard_ || !tail_) {
        return false;
    }
    const riff::ChunkHeader chunk{fourcc("00ix"), standardChunkSize - headBytes};
    std::memcpy(standard_.get(), &chunk, sizeof(chunk));
    clearStandard();
    return true;
}

void AviIndexWriter::add(std::uint64_t offset, std::uint32_t size, std::uint64_t pieceBegin) {
    const riff::StandardIndexEntry entry{static_cast<std::uint32_t>(offset - pieceBegin) + headBytes, size};
    unsigned char* entries = standard_.get() + headBytes + sizeof(riff::IndexHeader);
    std::memcpy(entries + standardEntries_ * sizeof(entry), &entry, sizeof(entry));
    ++standardEntries_;
    const riff::IndexHeader header = standardHeader(standardEntries_, pieceBegin);
    std::memcpy(standard_.get() + headBytes, &header, sizeof(header));
}

void AviIndexWriter::clearStandard() {
    standardEntries_ = 0;
    std::memset(standard_.get() + headBytes, 0, standardChunkSize_ - headBytes);
}

void AviIndexWriter::addLegacy(std::uint32_t offset, std::uint32_t size) {
    const riff::LegacyIndexEntry entry{frameTag, keyFrame, offset, size};
    std::memcpy(tail_.get() + headBytes + legacyEntries_ * sizeof(entry), &entry, sizeof(entry));
    ++legacyEntries_;
}

std::uint32_t AviIndexWriter::makeTail(std::uint64_t offset, bool legacy) {
    std::uint32_t bytes = 0;
    if (legacy) {
        const auto size = static_cast<std::uint32_t>(legacyEntries_ * sizeof(riff::LegacyIndexEntry));
        const riff::ChunkHeader index{fourcc("idx1"), size};
        std::memcpy(tail_.get(), &index, sizeof(index));
        bytes = headBytes + size;
    }
    auto padding = static_cast<std::uint32_t>((sector_ - (offset + bytes) % sector_) % sector_);
    if (padding != 0) {
        padding += padding < headBytes ? sector_ : 0;
        const riff::ChunkHeader junk{fourcc("JUNK"), padding - headBytes};
        std::memcpy(tail_.get() + bytes, &junk, sizeof(junk));
        std::memset(tail_.get() + bytes + headBytes, 0, padding - headBytes);
    }
    return bytes + padding;
}

std::uint64_t AviIndexWriter::tailBytes(std::uint32_t entries) const {
    return headBytes + entries * std::uint64_t{sizeof(riff::LegacyIndexEntry)} + sector_ + headBytes;
}
