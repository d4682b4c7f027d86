#include "marvo/avi/avi_header_writer.h"

#include "marvo/dv/dv_system.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

using riff::fourcc;

namespace {

constexpr std::uint32_t frameTag = fourcc("00dc");
constexpr std::uint32_t soundTag = fourcc("01wb");

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

/// "has index" and "was capture file"; with sound also "is interleaved".
constexpr std::uint32_t mainFlags = 0x10010;
constexpr std::uint32_t interleavedFlag = 0x100;

/// Sound beyond these is none that is written.
constexpr unsigned mostChannels = 16;
constexpr unsigned long mostSamplesPerFrame = 0x10000;
constexpr unsigned long highestRate = 1000000;

/// With which the GUID of a sub-format goes on behind the tag.
constexpr std::uint8_t subFormatEnd[] = {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};

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

/// Whether sound of that kind is written.
bool isWritten(const FileIOAVI::Sound& sound) {
    return sound.rate != 0 && sound.rate <= highestRate && sound.channels != 0 &&
           sound.channels <= mostChannels && sound.bits % 8 == 0 && sound.bits >= 8 && sound.bits <= 32 &&
           sound.mostSamples != 0 && sound.mostSamples <= mostSamplesPerFrame &&
           (sound.clockRate == 0 || sound.clockScale != 0);
}

/// Whether the sound takes the long form of its description, which not every program reads.
bool isExtended(const FileIOAVI::Sound& sound) {
    return sound.channels > 2 || sound.bits > 16;
}

} // namespace

std::optional<AviFormat> AviFormat::of(const FileIOAVI::Video& video, const FileIOAVI::Sound* sound) {
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
        video.height > maxPictureSide || (sound && !isWritten(*sound))) {
        return std::nullopt;
    }
    if (sound) {
        format.sound = *sound;
    }
    format.width = video.width;
    format.height = video.height;
    format.scale = 100;
    format.rate = video.is625 ? 2500 : 2997;
    return format;
}

/// A super index.
struct AviHeaderWriter::SuperIndex {
    riff::ChunkHeader chunk;
    riff::IndexHeader index;
    riff::SuperIndexEntry entries[superIndexRoom];

    void describe(std::uint32_t chunkId);
};

/// The header block up to the end of the video's list. Every member of this and the other parts stands at a
/// multiple of its own size, so there are no gaps.
struct AviHeaderWriter::VideoBlock {
    riff::ListHeader riff;
    riff::ListHeader headerList;
    riff::ChunkHeader mainChunk;
    riff::MainHeader main;
    riff::ListHeader streamList;
    riff::ChunkHeader streamChunk;
    riff::StreamHeader stream;
    riff::ChunkHeader formatChunk;
    riff::BitmapHeader format;
    SuperIndex super;

    void describe(const AviFormat& video, std::uint32_t sector);
};

/// What follows with sound, up to its format: in front of that and its super index.
struct AviHeaderWriter::SoundBlock {
    riff::ListHeader streamList;
    riff::ChunkHeader streamChunk;
    riff::StreamHeader stream;
    riff::ChunkHeader formatChunk;
};

/// Behind the streams' lists, up to the JUNK chunk's contents.
struct AviHeaderWriter::EndBlock {
    riff::ListHeader extendedList;
    riff::ChunkHeader extendedChunk;
    std::uint32_t totalFrames;
    std::uint32_t reserved[61];
    riff::ChunkHeader junk;
};

void AviHeaderWriter::SuperIndex::describe(std::uint32_t chunkId) {
    chunk = {fourcc("indx"), sizeof(index) + sizeof(entries)};
    index.longsPerEntry = sizeof(riff::SuperIndexEntry) / sizeof(std::uint32_t);
    index.chunkId = chunkId;
}

/// Fills in what the headers say of a file without frames.
void AviHeaderWriter::VideoBlock::describe(const AviFormat& video, std::uint32_t sector) {
    mainChunk = {fourcc("avih"), sizeof(main)};
    streamList = list("LIST", sizeof(VideoBlock) - offsetof(VideoBlock, streamList), "strl");
    streamChunk = {fourcc("strh"), sizeof(stream)};
    formatChunk = {fourcc("strf"), sizeof(format)};
    main.microSecPerFrame = static_cast<std::uint32_t>(std::uint64_t{1000000} * video.scale / video.rate);
    main.maxBytesPerSec = video.dataRate() + (video.sound ? video.sound->rate * video.blockBytes() : 0);
    main.paddingGranularity = sector;
    main.flags = mainFlags | (video.sound ? interleavedFlag : 0);
    main.streams = video.streams();
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
    super.describe(frameTag);
}

/// A part of the header block.
template <class Part>
Part& AviHeaderWriter::part(std::size_t offset) const {
    return *std::launder(reinterpret_cast<Part*>(file_.get() + offset));
}

/// The same, at its start: with zeros.
template <class Part>
Part& AviHeaderWriter::begin(std::size_t offset) {
    return *new (file_.get() + offset) Part{};
}

void AviHeaderWriter::describeSound(const FileIOAVI::Sound& sound, std::uint32_t blockBytes) {
    SoundBlock& head = begin<SoundBlock>(sizeof(VideoBlock));
    const std::uint32_t formatAt = sizeof(VideoBlock) + sizeof(SoundBlock);
    head.streamList = list("LIST", endAt_ - sizeof(VideoBlock), "strl");
    head.streamChunk = {fourcc("strh"), sizeof(head.stream)};
    head.formatChunk = {fourcc("strf"), soundIndexAt_ - formatAt};
    head.stream.type = fourcc("auds");
    const bool ownClock = sound.clockRate == 0;
    head.stream.scale = ownClock ? blockBytes : sound.clockScale;
    head.stream.rate = ownClock ? blockBytes * sound.rate : sound.clockRate;
    head.stream.suggestedBufferSize = sound.mostSamples * blockBytes;
    head.stream.sampleSize = blockBytes;
    riff::WaveFormat& format = begin<riff::WaveFormat>(formatAt);
    format = {riff::pcm,
              static_cast<std::uint16_t>(sound.channels),
              static_cast<std::uint32_t>(sound.rate),
              static_cast<std::uint32_t>(sound.rate * blockBytes),
              static_cast<std::uint16_t>(blockBytes),
              static_cast<std::uint16_t>(sound.bits)};
    if (isExtended(sound)) {
        format.tag = riff::extensible;
        riff::WaveExtension& more = begin<riff::WaveExtension>(formatAt + sizeof(format));
        more.bytes = sizeof(more) - sizeof(more.bytes);
        more.validBits = format.bitsPerSample;
        more.channelMask = static_cast<std::uint32_t>(sound.channelMask);
        more.tag = riff::pcm;
        std::copy(std::begin(subFormatEnd), std::end(subFormatEnd), more.subFormat);
    }
    begin<SuperIndex>(soundIndexAt_).describe(soundTag);
}

bool AviHeaderWriter::init(const AviFormat& format, std::uint32_t sector) {
    static_assert(sizeof(VideoBlock) == 16596 && offsetof(VideoBlock, super) == 212 &&
                  sizeof(VideoBlock) + sizeof(EndBlock) == 16872 && sizeof(SuperIndex) == indexChunkSize);
    endAt_ = sizeof(VideoBlock);
    if (format.sound) {
        soundIndexAt_ = endAt_ + sizeof(SoundBlock) + sizeof(riff::WaveFormat) +
                        (isExtended(*format.sound) ? sizeof(riff::WaveExtension) : 0);
        endAt_ = soundIndexAt_ + sizeof(SuperIndex);
    }
    const auto headers = static_cast<std::uint32_t>(endAt_ + sizeof(EndBlock));
    std::uint32_t padding = sector - (headers + sizeof(riff::ListHeader) - leastPadding) % sector;
    if (padding < leastPadding) {
        padding += sector;
    }
    padding -= leastPadding;
    sector_ = sector;
    dataOffset_ = headers + padding + sizeof(riff::ListHeader);
    file_ = allocSectors(dataOffset_);
    piece_ = allocSectors(sector);
    if (!file_ || !piece_) {
        return false;
    }
    VideoBlock& head = begin<VideoBlock>(0);
    head.describe(format, sector);
    head.riff = list("RIFF", dataOffset_, "AVI ");
    head.headerList =
        list("LIST", headers - sizeof(riff::ChunkHeader) - offsetof(VideoBlock, headerList), "hdrl");
    if (format.sound) {
        describeSound(*format.sound, format.blockBytes());
    }
    EndBlock& end = begin<EndBlock>(endAt_);
    end.extendedList = list("LIST", offsetof(EndBlock, junk), "odml");
    end.extendedChunk = {fourcc("dmlh"), sizeof(end.totalFrames) + sizeof(end.reserved)};
    end.junk = {fourcc("JUNK"), padding};
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
    VideoBlock& head = part<VideoBlock>(0);
    head.main.totalFrames = firstPiece;
    head.stream.length = all;
    part<EndBlock>(endAt_).totalFrames = all;
}

void AviHeaderWriter::setSamples(std::uint64_t samples) {
    part<SoundBlock>(sizeof(VideoBlock)).stream.length =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(samples, 0xFFFFFFFF));
}

void AviHeaderWriter::addIndex(AviStream stream, std::uint64_t offset, std::uint32_t duration) {
    SuperIndex& super =
        stream == AviStream::video ? part<VideoBlock>(0).super : part<SuperIndex>(soundIndexAt_);
    super.entries[super.index.entriesInUse++] = {static_cast<std::uint32_t>(offset),
                                                 static_cast<std::uint32_t>(offset >> 32), indexChunkSize,
                                                 duration};
}

std::uint32_t AviHeaderWriter::indexes() const {
    return part<VideoBlock>(0).super.index.entriesInUse;
}
