/// @file
/// AVI files of any length that take next to no room on the disk.
#pragma once

#include "marvo.h"

#include <cstdint>
#include <string>
#include <vector>

/// An AVI file with OpenDML indexes of any number of PAL frames, laid out as the engine's own recordings are,
/// but without the frames' pictures: the disk holds little more than headers and indexes (a sparse file).
/// Frames of which only an index entry tells lack their chunk headers, too, but for some 40 that are spread
/// evenly and those beside index chunks.
class SyntheticAvi {
public:
    /// Where an index stands in the file, with its chunk header, in bytes.
    struct Block {
        unsigned long long offset;
        unsigned long size;
    };

    static constexpr unsigned long frameSize = 144000;
    /// Bytes of the header block, up to the first frame.
    static constexpr unsigned long headerSize = 20480;

    /// Writes the file. Throws std::runtime_error when the disk refuses.
    SyntheticAvi(const wchar_t* name, unsigned long frames);

    /// The standard indexes in the order of the file.
    const std::vector<Block>& indexes() const { return indexes_; }

private:
    struct Piece {
        unsigned long long riff;
        unsigned long long movi;
        unsigned long long frames; ///< offset of the first frame
        unsigned long first;
        unsigned long behind;
    };

    void writePiece(unsigned long first, unsigned long behind);
    void writeFrames(unsigned long first, unsigned long behind);
    void writeStandardIndex(unsigned long first, unsigned long behind, unsigned long long base);
    void writeLegacyIndex(const Piece& piece);
    void writePieceHeader(const Piece& piece, unsigned long long moviEnd);
    std::string headers(unsigned long firstPieceFrames) const;
    std::string superIndex() const;
    void write(unsigned long long offset, const std::string& bytes);

    vcore::handle file_;
    unsigned long frames_;
    unsigned long stride_;
    unsigned long long end_ = headerSize;
    std::vector<Block> indexes_;
    std::vector<unsigned long> durations_;
};
