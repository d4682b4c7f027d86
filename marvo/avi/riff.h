/// @file
/// The structures of an AVI file.
#pragma once

#include <cstddef>
#include <cstdint>

/// The structures of an AVI file with OpenDML extensions, as they stand on disk (little-endian, packed). From
/// Microsoft's "AVI RIFF File Reference" and the OpenDML AVI File Format Extensions, version 1.02.
namespace riff {

/// A four-character code as it reads from a file: the first character in the lowest byte.
constexpr std::uint32_t fourcc(const char (&text)[5]) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

/// A chunk begins with its id and the number of bytes that follow; chunks begin at even offsets.
struct ChunkHeader {
    std::uint32_t id;
    std::uint32_t size;
};

/// "RIFF" and "LIST" chunks hold a form type and then chunks; `size` counts the type.
struct ListHeader {
    std::uint32_t id;
    std::uint32_t size;
    std::uint32_t type;
};

/// "avih".
struct MainHeader {
    std::uint32_t microSecPerFrame;
    std::uint32_t maxBytesPerSec;
    std::uint32_t paddingGranularity;
    std::uint32_t flags;
    std::uint32_t totalFrames; ///< frames of the first piece only; "dmlh" has the total
    std::uint32_t initialFrames;
    std::uint32_t streams;
    std::uint32_t suggestedBufferSize;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t reserved[4];
};

/// "strh".
struct StreamHeader {
    std::uint32_t type; ///< "vids", "auds", or "iavs" for interleaved DV (type 1)
    std::uint32_t handler;
    std::uint32_t flags;
    std::uint16_t priority;
    std::uint16_t language;
    std::uint32_t initialFrames;
    std::uint32_t scale;
    std::uint32_t rate; ///< rate / scale is frames per second
    std::uint32_t start;
    std::uint32_t length; ///< frames; of sound, samples of each channel
    std::uint32_t suggestedBufferSize;
    std::uint32_t quality;
    std::uint32_t sampleSize;
    std::int16_t frame[4]; ///< left, top, right, bottom
};

/// "strf" of a video stream: the system's BITMAPINFOHEADER.
struct BitmapHeader {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height;
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t compression;
    std::uint32_t sizeImage;
    std::int32_t xPelsPerMeter;
    std::int32_t yPelsPerMeter;
    std::uint32_t clrUsed;
    std::uint32_t clrImportant;
};

/// "strf" of a sound stream: the system's PCMWAVEFORMAT.
struct WaveFormat {
    std::uint16_t tag; ///< `pcm`, or `extensible`
    std::uint16_t channels;
    std::uint32_t samplesPerSec;
    std::uint32_t avgBytesPerSec;
    std::uint16_t blockAlign; ///< bytes of one sample of each channel
    std::uint16_t bitsPerSample;
};

/// What stands behind that with the tag `extensible`, in all the system's WAVEFORMATEXTENSIBLE.
struct WaveExtension {
    std::uint16_t bytes; ///< that follow
    std::uint16_t validBits;
    std::uint32_t channelMask;
    std::uint16_t tag; ///< the format's own tag, with which the sub-format begins
    std::uint8_t subFormat[14];
};

/// Formats of sound.
enum WaveTag : std::uint16_t { pcm = 1, extensible = 0xFFFE };

/// What "indx" and "00ix" chunks begin with, behind the chunk header. In a standard index the offset of an
/// entry is counted from `baseOffset`, which a super index leaves 0.
struct IndexHeader {
    std::uint16_t longsPerEntry;
    std::uint8_t subType;
    std::uint8_t type; ///< 0: index of indexes, 1: index of chunks
    std::uint32_t entriesInUse;
    std::uint32_t chunkId;
    std::uint32_t baseOffsetLow;
    std::uint32_t baseOffsetHigh;
    std::uint32_t reserved;
};

/// Entry of a super index: where a standard index chunk begins (its chunk header), its size with the header,
/// and how many frames it covers.
struct SuperIndexEntry {
    std::uint32_t offsetLow;
    std::uint32_t offsetHigh;
    std::uint32_t size;
    std::uint32_t duration;
};

/// Entry of a standard index: offset of a frame's data (behind its chunk header) from the base offset, and
/// the data's size; the top bit of the size says that the frame is no key frame.
struct StandardIndexEntry {
    std::uint32_t offset;
    std::uint32_t size;
};

/// Entry of "idx1": offset of a chunk's header, usually counted from the list type "movi", in some files from
/// the beginning of the file.
struct LegacyIndexEntry {
    std::uint32_t chunkId;
    std::uint32_t flags;
    std::uint32_t offset;
    std::uint32_t size;
};

static_assert(sizeof(MainHeader) == 56 && sizeof(StreamHeader) == 56 && sizeof(BitmapHeader) == 40);
static_assert(sizeof(IndexHeader) == 24 && sizeof(SuperIndexEntry) == 16 && sizeof(StandardIndexEntry) == 8);
static_assert(sizeof(WaveFormat) == 16 && sizeof(WaveExtension) == 24);
static_assert(sizeof(LegacyIndexEntry) == 16 && sizeof(ListHeader) == 12 && sizeof(ChunkHeader) == 8);

/// The bits of a standard index entry's size that are the size.
constexpr std::uint32_t standardSizeMask = 0x7FFFFFFF;

/// A 64-bit number of the two halves that it has in an index.
constexpr std::uint64_t join(std::uint32_t low, std::uint32_t high) {
    return static_cast<std::uint64_t>(high) << 32 | low;
}

/// `size` with the byte of padding that an odd chunk has behind it.
constexpr std::uint64_t padded(std::uint64_t size) {
    return size + (size & 1);
}

} // namespace riff
