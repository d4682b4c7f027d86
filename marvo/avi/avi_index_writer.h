/// @file
/// The indexes of an AVI file that is written.
#pragma once

#include "marvo/avi/riff.h"
#include "marvo/core/sector_memory.h"

/// The indexes of a file that is written, under construction: the standard index chunk that is being filled,
/// and the legacy index of the first piece. Their memory is reserved at the beginning; nothing is allocated
/// per frame.
///
/// Not locked: one thread at a time.
class AviIndexWriter {
public:
    /// Reserves memory: a standard index chunk of `standardChunkSize` bytes that takes at most `standardRoom`
    /// entries, and a legacy index of `legacyRoom` entries with padding to a multiple of `sector` bytes.
    /// False when there is not enough.
    bool init(std::uint32_t standardChunkSize, std::uint32_t standardRoom, std::uint32_t legacyRoom,
              std::uint32_t sector);

    /// Enters a frame of `size` bytes whose chunk header stands at `offset`, in a piece that begins at
    /// `pieceBegin`. The standard index must not be full.
    void add(std::uint64_t offset, std::uint32_t size, std::uint64_t pieceBegin);

    /// Enters the same frame into the legacy index, which must not be full. `offset` is counted from the list
    /// type "movi".
    void addLegacy(std::uint32_t offset, std::uint32_t size);

    /// Frames in the standard index.
    std::uint32_t standardEntries() const { return standardEntries_; }
    bool standardFull() const { return standardEntries_ == standardRoom_; }
    /// Frames in the legacy index.
    std::uint32_t legacyEntries() const { return legacyEntries_; }
    bool legacyFull() const { return legacyEntries_ == legacyRoom_; }

    /// The standard index chunk, as it goes to disk.
    const void* standardChunk() const { return standard_.get(); }
    /// Begins the next standard index chunk.
    void clearStandard();

    /// Makes the chunks that end a piece at `offset`: the legacy index, if `legacy`, and a JUNK chunk up to
    /// the next sector. Returns their size, 0 when nothing is needed.
    std::uint32_t makeTail(std::uint64_t offset, bool legacy);
    /// What `makeTail` has made.
    const void* tail() const { return tail_.get(); }

    /// The most bytes that the tail of a piece with `entries` frames in its legacy index takes; 0 entries for
    /// a piece without one.
    std::uint64_t tailBytes(std::uint32_t entries) const;

private:
    SectorBuffer standard_;
    SectorBuffer tail_;
    std::uint32_t standardChunkSize_ = 0;
    std::uint32_t standardRoom_ = 0;
    std::uint32_t standardEntries_ = 0;
    std::uint32_t legacyRoom_ = 0;
    std::uint32_t legacyEntries_ = 0;
    std::uint32_t sector_ = 1;
};
