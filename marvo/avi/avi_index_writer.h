/// @file
/// The indexes of an AVI file that is written.
#pragma once

#include "marvo/avi/riff.h"
#include "marvo/core/sector_memory.h"

#include <array>

/// The streams of a file that is written.
enum class AviStream { video, sound };

/// The indexes of a file that is written, under construction: the standard index chunk of each stream that is
/// being filled, and the legacy index of the first piece. Their memory is reserved at the beginning; nothing
/// is allocated per frame.
///
/// Not locked: one thread at a time.
class AviIndexWriter {
public:
    /// Reserves memory: for each of `streams` streams a standard index chunk of `standardChunkSize` bytes
    /// that takes at most `standardRoom` entries, and a legacy index of `legacyRoom` entries with padding to
    /// a multiple of `sector` bytes. False when there is not enough.
    bool init(unsigned streams, std::uint32_t standardChunkSize, std::uint32_t standardRoom,
              std::uint32_t legacyRoom, std::uint32_t sector);

    /// Enters a chunk of `size` bytes of data whose header stands at `offset`, in a piece that begins at
    /// `pieceBegin`. The stream's standard index must not be full.
    void add(AviStream stream, std::uint64_t offset, std::uint32_t size, std::uint64_t pieceBegin);

    /// Enters the same chunk into the legacy index, which must not be full. `offset` is counted from the list
    /// type "movi".
    void addLegacy(AviStream stream, std::uint32_t offset, std::uint32_t size);

    /// Chunks in a stream's standard index.
    std::uint32_t standardEntries(AviStream stream) const { return of(stream).entries; }
    /// Whether no more frames go into the standard index; there is never more sound than frames.
    bool standardFull() const { return standardEntries(AviStream::video) == standardRoom_; }
    /// Chunks in the legacy index.
    std::uint32_t legacyEntries() const { return legacyEntries_; }
    /// Whether the legacy index does not take one more chunk of each stream.
    bool legacyFull() const { return legacyRoom_ - legacyEntries_ < streams_; }

    /// A stream's standard index chunk, as it goes to disk.
    const void* standardChunk(AviStream stream) const { return of(stream).chunk.get(); }
    /// Begins the stream's next standard index chunk.
    void clearStandard(AviStream stream);

    /// Makes the chunks that end a piece at `offset`: the legacy index, if `legacy`, and a JUNK chunk up to
    /// the next sector. Returns their size, 0 when nothing is needed.
    std::uint32_t makeTail(std::uint64_t offset, bool legacy);
    /// What `makeTail` has made.
    const void* tail() const { return tail_.get(); }

    /// The most bytes that the tail of a piece with `entries` chunks in its legacy index takes; 0 entries for
    /// a piece without one.
    std::uint64_t tailBytes(std::uint32_t entries) const;

private:
    struct Standard {
        SectorBuffer chunk;
        std::uint32_t entries = 0;
    };

    const Standard& of(AviStream stream) const { return standard_[static_cast<std::size_t>(stream)]; }
    Standard& of(AviStream stream) { return standard_[static_cast<std::size_t>(stream)]; }

    std::array<Standard, 2> standard_;
    SectorBuffer tail_;
    unsigned streams_ = 1;
    std::uint32_t standardChunkSize_ = 0;
    std::uint32_t standardRoom_ = 0;
    std::uint32_t legacyRoom_ = 0;
    std::uint32_t legacyEntries_ = 0;
    std::uint32_t sector_ = 1;
};
