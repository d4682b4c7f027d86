/// @file
/// The table of kinds: all that is particular to each.
#pragma once

#include "marvo/recording/reader.h"
#include "marvo/recording/writer.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace recording {

/// How a file is opened for reading.
struct OpenOptions {
    /// Whether a raw recording may have been made on a volume of another kind than that on which it lies, so
    /// that its record size is found out; otherwise it is that of the volume.
    bool anyVolume = false;
    /// With `anyVolume`: bytes of a sector of that other volume, a power of two; 0 to find out.
    unsigned long sector = 0;
};

/// The frames of a file that were found by searching it.
struct FoundFrames {
    std::vector<Reader::Place> places;      ///< in the order of the file; not all of them need to be whole
    std::vector<unsigned long long> broken; ///< where frames begin that are surely not whole
    unsigned long long promised = 0;        ///< frames that the file's headers promise; 0 when they do not
};

/// What there is to know of a kind. To add a kind, write its reader and writer, and a row in kinds.cpp.
struct KindRow {
    Kind kind;               ///< whose row this is
    const char* identifier;  ///< one word, for programs
    const char* description; ///< in words, for people
    /// How names of such files end, with the dot; empty when the engine takes them by any name.
    const char* extension;

    /// Whether a file of this name is to be taken for one of this kind. Of several rows the first counts; the
    /// others are tried when a file cannot be read as that.
    bool (*isMeantBy)(const wchar_t* name);
    /// Whether a file is of this kind whose first bytes these are.
    bool (*startsSo)(const unsigned char* head, std::size_t bytes);
    /// Opens an existing file as one of this kind. Null, with the reason in `error`, when that is impossible.
    std::unique_ptr<Reader> (*open)(const wchar_t* name, const OpenOptions& options, std::wstring& error);
    /// Creates a file of this kind for frames of `frameSize` bytes. Null, with the reason in `error`, when
    /// that is impossible.
    std::unique_ptr<Writer> (*create)(const wchar_t* name, unsigned long frameSize,
                                      long long timePerFrame_100ns, std::wstring& error);

    // For the search in damaged files.
    /// Finds frames in a way of its own; null where there is none. `progress`, whose result does not count,
    /// may throw.
    bool (*find)(const wchar_t* name, FoundFrames& found, const Reader::ProgressCall& progress);
    /// Whether the `headerBytes` in front of a frame and the start of that frame are this kind's.
    bool (*standsInFront)(const unsigned char* head, std::size_t bytes);
    /// Where in the file the first frame's own bytes stand, as far as that is the same in all files.
    unsigned long firstFrame;
    /// Whether the frames go up to the end of the file.
    bool framesToEnd;
};

/// Bytes that `KindRow::startsSo` and `standsInFront` look at.
constexpr std::size_t headBytes = 16;

/// All kinds, in the order in which they are asked.
std::span<const KindRow> kinds();
/// The row of a kind.
const KindRow& rowOf(Kind kind);
/// The row that a name means.
const KindRow& rowOfName(const wchar_t* name);
/// The row of a file's first bytes; null when they are none of any kind.
const KindRow* rowOfContent(const InputFile& file);
/// The row whose extension a name ends with; null when there is none.
const KindRow* rowOfExtension(const wchar_t* name);

/// Opens a recording as what its first bytes say, on whatever volume it was made; an empty file, which may be
/// about to grow, as what its name means. Null when that is impossible; `predicate` then says why ("cannot be
/// opened: ...").
std::unique_ptr<Reader> openByContent(const wchar_t* name, std::wstring& predicate);

} // namespace recording
