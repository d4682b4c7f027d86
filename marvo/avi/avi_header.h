/// @file
/// What the headers of an AVI file say.
#pragma once

#include "marvo/avi/riff_walker.h"

/// What the headers of an AVI file say, as far as they are needed to find and to describe its DV video.
/// Everything is as it stands in the file, which may be damaged.
struct AviHeader {
    bool hasMain = false;
    riff::MainHeader main{};
    unsigned long streams = 0;      ///< stream headers found
    unsigned long audioStreams = 0; ///< of these "auds"
    bool interleaved = false;       ///< there is a stream of the kind "iavs"

    bool hasVideo = false;         ///< there is a DV video stream, which the following members describe
    unsigned long videoStream = 0; ///< its number, which is the number in the ids of its chunks
    riff::StreamHeader video{};
    riff::BitmapHeader format{};
    RiffChunk superIndex; ///< "indx"; size 0 without one

    unsigned long soundStream = 0; ///< the number of the first sound stream, if there is any
    riff::StreamHeader sound{};    ///< what its header says
    RiffChunk soundFormat;         ///< its "strf"; size 0 without one
    RiffChunk soundSuperIndex;     ///< its "indx"; size 0 without one

    bool hasExtended = false;
    std::uint32_t extendedTotalFrames = 0; ///< "dmlh"

    bool hasMovi = false;
    RiffChunk movi; ///< the first list of frames

    /// Reads the headers up to the first "movi" list. Returns null, or what is wrong; the members are filled
    /// as far as possible then.
    const wchar_t* read(AviSource& source);

    /// Whether `id` is the id of a chunk with a frame of the video stream: its number, then "dc" or "db".
    bool isFrame(std::uint32_t id) const;

    /// Whether `id` is the id of a chunk of the first sound stream: its number, then "wb".
    bool isSound(std::uint32_t id) const;

    /// Whether `id` is the id of a standard index of the video stream: "ix" and its number, or the other way
    /// round.
    bool isStandardIndex(std::uint32_t id) const;

    /// Whether `id` is that of a frame of whatever stream.
    static bool isAnyFrame(std::uint32_t id);

    /// Where the headers have no video stream, takes the stream of the frame whose chunk is at `offset` for
    /// it.
    void assumeVideo(unsigned long long offset, AviSource& source);

    /// Frames per second; 0 when the header does not say it.
    double rate() const { return video.scale != 0 ? 1.0 * video.rate / video.scale : 0.0; }

    /// Bytes of a frame as the headers have it, for a file without frames.
    unsigned long nominalFrameSize() const;

private:
    static std::uint32_t numberText(unsigned long stream);
    const wchar_t* readChunk(AviSource& source, RiffWalker& walker, const RiffChunk& chunk);
    const wchar_t* readList(RiffWalker& walker, const RiffChunk& list);
    void readStreamHeader(AviSource& source, const RiffChunk& chunk);
    void readFormat(AviSource& source, const RiffChunk& chunk);

    bool inHeaderList_ = false;
    riff::StreamHeader stream_{};
    RiffChunk* currentIndex_ = nullptr; ///< where the super index of the current stream is noted
};
