/// @file
/// The search for the frames of a sound AVI file.
#pragma once

#include "marvo/avi/avi_header.h"
#include "marvo/avi/avi_index.h"
#include "marvo/avi/avi_odml_file_info.h"

/// Finds the frames of an AVI file, in the order of the file: by its indexes where these are sound, and where
/// they tell nothing (before the first indexed frame, in gaps that could hold a frame, behind the last) by
/// walking the chunks. So every frame that is whole on disk is found, whatever state the indexes are in, and
/// a sound file costs a few reads only.
///
/// A chunk of the video stream without data (or with less than a DIF block), which some programs write for a
/// dropped frame, is no frame: it has no number, and whoever plays the file goes from the frame before it to
/// the one behind it.
class AviFrameFinder {
public:
    /// Works on `source` with the headers `header`, which outlive it; fills `index` and the counts in `info`.
    AviFrameFinder(AviSource& source, const AviHeader& header, AviIndex& index, AVI_ODMLFileInfo& info)
        : source_(source), header_(header), index_(index), info_(info) {}

    /// Finds all frames.
    void find();

    /// Finds the frames that have been written since; what is known is not read again.
    void findNew();

    /// Why the indexes were not taken, or not to their end; null when they were, or when there are none.
    const wchar_t* doubt() const { return doubt_; }

private:
    void findPieces();
    void addPiece(unsigned long long offset);
    void loadSuperIndex();
    bool loadStandardIndex(const riff::SuperIndexEntry& entry, unsigned long long room);
    void keepHeaders(unsigned long long offset, unsigned long begin, unsigned long end);
    void loadLegacyIndex();
    bool findLegacyIndex(RiffChunk& found);
    bool legacyBase(const riff::LegacyIndexEntry& entry, unsigned long long& base);
    bool addEntries(unsigned long long base, const riff::StandardIndexEntry* entries, std::size_t count);
    bool addRun(unsigned long long offset, std::uint32_t size, std::uint32_t stride, std::uint32_t count);
    bool addIndexed(unsigned long long offset, std::uint32_t size);
    bool isFrameAt(unsigned long long offset, std::uint32_t size);
    bool samplesFit();
    unsigned long sampleNear(unsigned long frame, unsigned long step) const;
    void restart();
    bool walkTo(unsigned long long end);
    void addWalked(const RiffChunk& chunk);
    bool doubtIndexes(const wchar_t* reason);

    AviSource& source_;
    const AviHeader& header_;
    AviIndex& index_;
    AVI_ODMLFileInfo& info_;
    unsigned long long cursor_ = 0; ///< behind what is known: there a chunk begins
    const wchar_t* doubt_ = nullptr;
    unsigned long long behindIndexes_ = 0; ///< where the entries of the standard index read last end
    /// A standard index with its header, and what stands behind it.
    std::vector<riff::StandardIndexEntry> block_;
    std::vector<unsigned long> indexStarts_; ///< numbers of the frames with which the indexes start
};
