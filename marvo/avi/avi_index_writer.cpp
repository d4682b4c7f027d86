#include "marvo/avi/avi_index_writer.h"

#include <cstring>

using riff::fourcc;

namespace {

/// The ids of a stream's chunks and of its standard indexes.
struct Tags {
    std::uint32_t chunk;
    std::uint32_t index;
};
constexpr Tags tags[] = {{fourcc("00dc"), fourcc("00ix")}, {fourcc("01wb"), fourcc("01ix")}};

constexpr const Tags& tagsOf(AviStream stream) {
    return tags[static_cast<std::size_t>(stream)];
}

constexpr std::uint32_t keyFrame = 0x10;
constexpr std::uint32_t headBytes = sizeof(riff::ChunkHeader);

riff::IndexHeader standardHeader(AviStream stream, std::uint32_t entries, std::uint64_t base) {
    riff::IndexHeader header{};
    header.longsPerEntry = sizeof(riff::StandardIndexEntry) / sizeof(std::uint32_t);
    header.type = 1;
    header.entriesInUse = entries;
    header.chunkId = tagsOf(stream).chunk;
    header.baseOffsetLow = static_cast<std::uint32_t>(base);
    header.baseOffsetHigh = static_cast<std::uint32_t>(base >> 32);
    return header;
}

} // namespace

bool AviIndexWriter::init(unsigned streams, std::uint32_t standardChunkSize, std::uint32_t standardRoom,
                          std::uint32_t legacyRoom, std::uint32_t sector) {
    streams_ = streams;
    standardChunkSize_ = standardChunkSize;
    standardRoom_ = standardRoom;
    legacyRoom_ = legacyRoom;
    sector_ = sector;
    for (const AviStream stream : {AviStream::video, AviStream::sound}) {
        if (static_cast<unsigned>(stream) == streams) {
            break;
        }
        Standard& standard = of(stream);
        standard.chunk = allocSectors(standardChunkSize);
        if (!standard.chunk) {
            return false;
        }
        const riff::ChunkHeader chunk{tagsOf(stream).index, standardChunkSize - headBytes};
        std::memcpy(standard.chunk.get(), &chunk, sizeof(chunk));
        clearStandard(stream);
    }
    tail_ = allocSectors(static_cast<unsigned long>(tailBytes(legacyRoom)));
    return tail_ != nullptr;
}

void AviIndexWriter::add(AviStream stream, std::uint64_t offset, std::uint32_t size,
                         std::uint64_t pieceBegin) {
    Standard& standard = of(stream);
    const riff::StandardIndexEntry entry{static_cast<std::uint32_t>(offset - pieceBegin) + headBytes, size};
    unsigned char* entries = standard.chunk.get() + headBytes + sizeof(riff::IndexHeader);
    std::memcpy(entries + standard.entries * sizeof(entry), &entry, sizeof(entry));
    ++standard.entries;
    const riff::IndexHeader header = standardHeader(stream, standard.entries, pieceBegin);
    std::memcpy(standard.chunk.get() + headBytes, &header, sizeof(header));
}

void AviIndexWriter::clearStandard(AviStream stream) {
    Standard& standard = of(stream);
    standard.entries = 0;
    std::memset(standard.chunk.get() + headBytes, 0, standardChunkSize_ - headBytes);
}

void AviIndexWriter::addLegacy(AviStream stream, std::uint32_t offset, std::uint32_t size) {
    const riff::LegacyIndexEntry entry{tagsOf(stream).chunk, keyFrame, offset, size};
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
