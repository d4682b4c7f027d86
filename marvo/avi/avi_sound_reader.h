/// @file
/// The sound stream of an AVI file that is read.
#pragma once

#include "marvo/avi/avi_header.h"
#include "marvo/avi/file_io_avi.h"

#include <cstdint>
#include <vector>

/// Reads the first sound stream of an AVI file, if that is uncompressed, by the frames of its video: each has
/// the sound of its time. Its chunks are found by their indexes where there are any, else by walking the
/// file, which is also done where chunks without a frame stand between the frames, since the sound goes on
/// behind those.
///
/// What the indexes say is not believed further than to a wrong sound. Not locked: one thread at a time.
class AviSoundReader {
public:
    /// What there is.
    enum class Stream {
        none,       ///< no sound stream, or no file
        unreadable, ///< one that is compressed or makes no sense; `fault` says which
        readable,
    };

    /// Opens `name`, whose video has `frames` frames by now.
    Stream open(const wchar_t* name, unsigned long frames);

    /// Why the stream is not readable, as a predicate.
    const wchar_t* fault() const { return fault_; }
    /// Sound streams in the file.
    unsigned long streams() const { return header_.audioStreams; }
    /// As what the sound is written again.
    const FileIOAVI::Sound& format() const { return format_; }

    /// The sound of the time of frame `frame`: in all frames together the whole stream, a whole number of
    /// samples of all channels in each. Silence where the file has none or cannot be read. Valid until the
    /// next call.
    const std::vector<unsigned char>& read(unsigned long frame);

private:
    struct Chunk {
        std::uint64_t offset; ///< of its data
        std::uint64_t place;  ///< bytes of sound in front of it
        std::uint32_t bytes;
    };

    bool readFormat();
    bool findChunks(unsigned long frames);
    bool loadSuperIndex();
    bool loadStandardIndex(std::uint64_t offset);
    bool loadLegacyIndex();
    bool isWhole();
    bool isChunkAt(const Chunk& chunk);
    void walk();
    bool add(std::uint64_t offset, std::uint32_t bytes);
    long long placeOf(unsigned long frame) const;

    AviSource source_;
    AviHeader header_;
    FileIOAVI::Sound format_;
    const wchar_t* fault_ = L"";
    unsigned blockBytes_ = 1;
    double samplesPerFrame_ = 0;
    long long firstSample_ = 0; ///< of the stream, counted from the start of the video
    std::vector<Chunk> chunks_;
    std::uint64_t bytes_ = 0;
    std::vector<unsigned long>
        drops_; ///< for each chunk without a frame, how many frames stand in front of it
    std::vector<unsigned char> sound_;
};
