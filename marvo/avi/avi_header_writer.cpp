#include "marvo/avi/avi_header_writer.h"

#include "marvo/dv/dv_system.h"

#include <cstddef>
#include <cstring>
#include <new>

using riff::fourcc;

namespace {

constexpr std::uint32_t frameTag = fourcc("00dc");

/// Sizes of frames whose size is not given: the largest 4:2:2 picture that is captured, and a usual MPEG-2
/// buffer.
constexpr std::uint32_t uncompressedFrameSize = 701440;
constexpr std::uint32_t mpeg2FrameSize = 0x20000;

/// The writer also takes what is no DV; a frame of 16 MB is beyond every picture that is written so.
constexpr unsigned long maxOtherFrameBytes = 0x1000000;

/// Pictures beyond this do not fit the rectangle of a stream header.
constexpr unsigned long maxPictureSide = 0x7FFF;

/// The padding in front of the first frame is reckoned as if this much of it were never left out.
constexpr std::uint32_t leastPadding = 16;

/// "has index" and "was capture file".
constexpr std::uint32_t mainFlags = 0x10010;

/// Beginning of a piece behind the first one: its header and a JUNK chunk, which takes what the list header
/// leaves of the sector.
struct PieceHead {
    riff::ListHeader riff;
    riff::ChunkHeader junk;
};

const vdv::System& systemFor(bool is625) {
    return is625 ? vdv::system625 : vdv::system525;
}

std::uint32_t dvFrameSize(unsigned long subKind, bool is625) {
    const unsigned long channel = systemFor(is625).frameBytes;
    switch (subKind) {
    case 411:
    case 420:
        return channel;
    case 422:
        return 2 * channel;
    default:
        return 0;
    }
}

/// A list of `bytes` bytes with its header.
riff::ListHeader list(const char (&id)[5], std::uint64_t bytes, const char (&type)[5]) {
    return {fourcc(id), static_cast<std::uint32_t>(bytes - sizeof(riff::ChunkHeader)), fourcc(type)};
}

/// Sets the size of the list whose header stands at `header`.
void setListSize(unsigned char* header, std::uint64_t bytes) {
    const auto size = static_cast<std::uint32_t>(bytes - sizeof(riff::ChunkHeader));
    std::memcpy(header + offsetof(riff::ListHeader, size), &size, sizeof(size));
}

} // namespace

std::optional<AviFormat> AviFormat::of(const FileIOAVI::Video& video) {
    AviFormat format{};
    switch (video.kind) {
    case FileIOAVI::Uncompressed:
        format.codec = fourcc("UYVY");
        format.frameSize = video.maxFrameSize != 0 ? video.maxFrameSize : uncompressedFrameSize;
        break;
    case FileIOAVI::Dv:
        format.codec = video.subKind == 422 ? fourcc("dv50") : fourcc("dvsd");
        format.frameSize = dvFrameSize(video.subKind, video.is625);
        format.fixedSize = true;
        break;
    case FileIOAVI::Mpeg2:
        format.codec = fourcc("mpg2");
        format.frameSize = video.maxFrameSize != 0 ? video.maxFrameSize : mpeg2FrameSize;
        break;
    default:
        break;
    }
    if (format.frameSize == 0 || format.frameSize > maxOtherFrameBytes || video.width > maxPictureSide ||
        video.height > maxPictureSide) {
        return std::nullopt;
    }
    format.width = video.width;
    format.height = video.height;
    format.scale = 100;
    format.rate = video.is625 ? 2500 : 2997;
    return format;
}

/// The header block up to the JUNK chunk's contents. Every member stands at a multiple of its own size, so
/// the structure has no gaps.
struct AviHeaderWriter::FileBlock {
    riff::ListHeader riff;
    riff::ListHeader headerList;
    riff::ChunkHeader mainChunk;
    riff::MainHeader main;
    riff::ListHeader streamList;
    riff::ChunkHeader streamChunk;
    riff::StreamHeader stream;
    riff::ChunkHeader formatChunk;
    riff::BitmapHeader format;
    riff::ChunkHeader superIndexChunk;
    riff::IndexHeader superIndex;
    riff::SuperIndexEntry entries[superIndexRoom];
    riff::ListHeader extendedList;
    riff::ChunkHeader extendedChunk;
    std::uint32_t totalFrames;
    std::uint32_t reserved[61];
    riff::ChunkHeader junk;

    void beginChunks(std::uint32_t dataOffset);
    void describe(const AviFormat& video, std::uint32_t sector);
};

/// Fills in the headers of chunks and lists.
void AviHeaderWriter::FileBlock::beginChunks(std::uint32_t dataOffset) {
    constexpr auto junkAt = offsetof(FileBlock, junk);
    constexpr auto extendedAt = offsetof(FileBlock, extendedList);
    riff = list("RIFF", dataOffset, "AVI ");
    headerList = list("LIST", junkAt - offsetof(FileBlock, headerList), "hdrl");
    mainChunk = {fourcc("avih"), sizeof(main)};
    streamList = list("LIST", extendedAt - offsetof(FileBlock, streamList), "strl");
    streamChunk = {fourcc("strh"), sizeof(stream)};
    formatChunk = {fourcc("strf"), sizeof(format)};
    superIndexChunk = {fourcc("indx"), sizeof(superIndex) + sizeof(entries)};
    extendedList = list("LIST", junkAt - extendedAt, "odml");
    extendedChunk = {fourcc("dmlh"), sizeof(totalFrames) + sizeof(reserved)};
    junk = {fourcc("JUNK"),
            static_cast<std::uint32_t>(dataOffset - sizeof(FileBlock) - sizeof(riff::ListHeader))};
}

/// Fills in what the headers say of a file without frames.
void AviHeaderWriter::FileBlock::describe(const AviFormat& video, std::uint32_t sector) {
    main.microSecPerFrame = static_cast<std::uint32_t>(std::uint64_t{1000000} * video.scale / video.rate);
    main.maxBytesPerSec = video.dataRate();
    main.paddingGranularity = sector;
    main.flags = mainFlags;
    main.streams = 1;
    main.suggestedBufferSize = video.frameSize;
    main.width = video.width;
    main.height = video.height;
    stream.type = fourcc("vids");
    stream.handler = video.codec;
    stream.scale = video.scale;
    stream.rate = video.rate;
    stream.suggestedBufferSize = video.frameSize;
    stream.frame[2] = static_cast<std::int16_t>(video.width);
    stream.frame[3] = static_cast<std::int16_t>(video.height);
    format.size = sizeof(format);
    format.width = static_cast<std::int32_t>(video.width);
    format.height = static_cast<std::int32_t>(video.height);
    format.planes = 1;
    format.bitCount = 24;
    format.compression = video.codec;
    format.sizeImage = video.frameSize;
    superIndex.longsPerEntry = sizeof(riff::SuperIndexEntry) / sizeof(std::uint32_t);
    superIndex.chunkId = frameTag;
}

AviHeaderWriter::FileBlock& AviHeaderWriter::block() const {
    return *std::launder(reinterpret_cast<FileBlock*>(file_.get()));
}

bool AviHeaderWriter::init(const AviFormat& format, std::uint32_t sector) {
    static_assert(sizeof(FileBlock) == 16872 && offsetof(FileBlock, superIndexChunk) == 212 &&
                  offsetof(FileBlock, extendedList) == 16596);
    std::uint32_t padding = sector - (sizeof(FileBlock) + sizeof(riff::ListHeader) - leastPadding) % sector;
    if (padding < leastPadding) {
        padding += sector;
    }
    padding -= leastPadding;
    sector_ = sector;
    dataOffset_ = sizeof(FileBlock) + padding + sizeof(riff::ListHeader);
    file_ = allocSectors(dataOffset_);
    piece_ = allocSectors(sector);
    if (!file_ || !piece_) {
        return false;
    }
    FileBlock& head = *new (file_.get()) FileBlock{};
    head.beginChunks(dataOffset_);
    head.describe(format, sector);
    const riff::ListHeader movi = list("LIST", sizeof(riff::ListHeader), "movi");
    std::memcpy(file_.get() + dataOffset_ - sizeof(movi), &movi, sizeof(movi));
    const auto behindPiece = static_cast<std::uint32_t>(sector - sizeof(PieceHead) - sizeof(movi));
    const PieceHead piece{list("RIFF", sector, "AVIX"), {fourcc("JUNK"), behindPiece}};
    std::memcpy(piece_.get(), &piece, sizeof(piece));
    std::memcpy(piece_.get() + sector - sizeof(movi), &movi, sizeof(movi));
    return true;
}

void AviHeaderWriter::setSizes(bool firstPiece, std::uint64_t moviEnd, std::uint64_t end) {
    unsigned char* begin = firstPiece ? file_.get() : piece_.get();
    const std::uint32_t frames = firstPiece ? dataOffset_ : sector_;
    setListSize(begin, end);
    setListSize(begin + frames - sizeof(riff::ListHeader), moviEnd - frames + sizeof(riff::ListHeader));
}

void AviHeaderWriter::setFrames(std::uint32_t firstPiece, std::uint32_t all) {
    block().main.totalFrames = firstPiece;
    block().stream.length = all;
    block().totalFrames = all;
}

void AviHeaderWriter::addIndex(std::uint64_t offset, std::uint32_t frames) {
    FileBlock& head = block();
    head.entries[head.superIndex.entriesInUse++] = {
        static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(offset >> 32), indexChunkSize, frames};
}

std::uint32_t AviHeaderWriter::indexes() const {
    return block().superIndex.entriesInUse;
}
