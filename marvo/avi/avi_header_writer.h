/// @file
/// The headers of an AVI file that is written.
#pragma once

#include "marvo/avi/avi_index_writer.h"
#include "marvo/avi/file_io_avi.h"
#include "marvo/avi/riff.h"
#include "marvo/core/sector_memory.h"

#include <optional>

/// What the headers of a file that is written say of its video and its sound.
struct AviFormat {
    std::uint32_t codec;     ///< four-character code
    std::uint32_t frameSize; ///< bytes of the largest frame
    bool fixedSize;          ///< whether every frame has that size
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t scale;
    std::uint32_t rate; ///< rate / scale is frames per second

    std::optional<FileIOAVI::Sound> sound;

    /// The format for the arguments of `FileIOAVI::create`; nothing for a codec, a size or a kind of sound
    /// that is not written.
    static std::optional<AviFormat> of(const FileIOAVI::Video& video, const FileIOAVI::Sound* sound);

    /// Streams of the file.
    unsigned streams() const { return sound ? 2 : 1; }
    /// Bytes of one sample of each channel; 0 without sound.
    std::uint32_t blockBytes() const { return sound ? sound->channels * (sound->bits / 8) : 0; }
    /// The most bytes of sound that stand behind a frame; 0 without sound.
    std::uint32_t mostSoundBytes() const { return sound ? sound->mostSamples * blockBytes() : 0; }

    /// Bytes of video per second.
    std::uint32_t dataRate() const {
        return static_cast<std::uint32_t>(std::uint64_t{frameSize} * rate / scale);
    }
};

/// The header block of the first piece and, once there is one, the beginning of the piece that is being
/// written, in memory as they go to disk. docs/formats.md has the table of offsets.
///
/// Not locked: one thread at a time.
class AviHeaderWriter {
public:
    /// Bytes of a standard index chunk with its header; the super index has the same size.
    static constexpr std::uint32_t indexChunkSize = 16384;
    /// Entries that the super index has room for.
    static constexpr std::uint32_t superIndexRoom =
        (indexChunkSize - sizeof(riff::ChunkHeader) - sizeof(riff::IndexHeader)) /
        sizeof(riff::SuperIndexEntry);

    /// Lays out both blocks so that frames begin at a multiple of `sector` bytes. False when there is no
    /// memory.
    bool init(const AviFormat& format, std::uint32_t sector);

    /// The header block, as it goes to offset 0: `dataOffset` bytes.
    const void* fileBlock() const { return file_.get(); }
    /// Offset of the first piece's first frame.
    std::uint32_t dataOffset() const { return dataOffset_; }

    /// The beginning of a later piece: `pieceBlockSize` bytes.
    const void* pieceBlock() const { return piece_.get(); }
    std::uint32_t pieceBlockSize() const { return sector_; }

    /// Sets the sizes of the first piece, or of the later piece: bytes from its start to the end of its
    /// "movi" list and to its own end.
    void setSizes(bool firstPiece, std::uint64_t moviEnd, std::uint64_t end);

    /// Sets the frames of the first piece and of the file.
    void setFrames(std::uint32_t firstPiece, std::uint32_t all);

    /// Sets the samples of each channel in the file.
    void setSamples(std::uint64_t samples);

    /// Enters a standard index chunk, which covers so many frames or samples, into the stream's super index,
    /// which is not full.
    void addIndex(AviStream stream, std::uint64_t offset, std::uint32_t duration);
    /// Standard index chunks in the video's super index; the sound's has no more.
    std::uint32_t indexes() const;

private:
    struct VideoBlock;
    struct SoundBlock;
    struct SuperIndex;
    struct EndBlock;

    template <class Part>
    Part& part(std::size_t offset) const;
    template <class Part>
    Part& begin(std::size_t offset);
    void describeSound(const FileIOAVI::Sound& sound, std::uint32_t blockBytes);

    SectorBuffer file_;
    SectorBuffer piece_;
    std::uint32_t sector_ = 0;
    std::uint32_t soundIndexAt_ = 0; ///< of the sound's super index chunk; 0 without sound
    std::uint32_t endAt_ = 0;        ///< of what stands behind the streams' lists
    std::uint32_t dataOffset_ = 0;
};
