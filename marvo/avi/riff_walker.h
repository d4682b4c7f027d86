/// @file
/// The walk over the chunks of a file.
#pragma once

#include "marvo/avi/avi_source.h"
#include "marvo/avi/riff.h"

/// One chunk of a file, as it stands there.
struct RiffChunk {
    unsigned long long offset = 0; ///< bytes from the start of the file to the chunk's header
    std::uint32_t id = 0;
    std::uint32_t size = 0; ///< bytes behind the header, as the header says; may be damage when it is a list
    std::uint32_t type = 0; ///< form type of "RIFF" and "LIST", else 0

    bool isList() const { return id == riff::fourcc("RIFF") || id == riff::fourcc("LIST"); }
    unsigned long long data() const { return offset + sizeof(riff::ChunkHeader); }
    unsigned long long end() const { return data() + size; }
    unsigned long long paddedEnd() const { return data() + riff::padded(size); }
};

/// Walks the chunks of a file one behind the other. Every step goes forward, so a walk ends whatever the file
/// holds.
///
/// Sizes of lists are not relied upon, since those of a recording that still runs or was cut off are not
/// true: who wants to see what is in a list enters it, and then simply walks on out of it.
class RiffWalker {
public:
    /// Walks `source` from `begin`, where a chunk begins, up to `end` or the end of the file.
    RiffWalker(AviSource& source, unsigned long long begin, unsigned long long end = ~0ull);

    enum class Step {
        Chunk,   ///< the next chunk; whole, unless it is a list
        End,     ///< the end was reached exactly, or too little is left for a header
        Cut,     ///< a chunk begins that goes beyond the end
        Garbage, ///< what comes is no chunk
    };

    /// The next chunk, on the level of the last one or above it. After anything else than `Chunk` the
    /// position stays.
    Step next(RiffChunk& chunk);

    /// Goes on with the chunks in `list`, which was the last one found.
    void enter(const RiffChunk& list) { position_ = list.offset + sizeof(riff::ListHeader); }

    /// Goes on at `offset`.
    void moveTo(unsigned long long offset) { position_ = offset; }

    /// Where the next chunk begins.
    unsigned long long position() const { return position_; }

    /// Whether `id` can be the id of a chunk: four printable characters.
    static bool isId(std::uint32_t id);

private:
    bool startsChunk(unsigned long long offset);
    void skipMissingPadding();

    AviSource& source_;
    unsigned long long position_;
    unsigned long long end_;
    bool odd_ = false;
};
