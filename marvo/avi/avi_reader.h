/// @file
/// The reading half of `FileIOAVI`.
#pragma once

#include "marvo/avi/avi_frame_finder.h"
#include "marvo/avi/avi_search.h"
#include "marvo/avi/file_io_avi.h"

#include <optional>

/// The reading half of `FileIOAVI`: finds the frames of a file and reads them.
///
/// Not locked: one thread at a time. A thread may be killed within `readFrame`, which changes nothing and
/// takes no memory when it succeeds.
class AviReader {
public:
    /// As `FileIOAVI::open`; fills `info`, which must outlive the reader. A search without trust tells its
    /// `progress`.
    int open(const wchar_t* name, FileIOAVI::Trust trust, AVI_ODMLFileInfo& info,
             const AviSearch::Progress& progress = {});

    /// After an opening without trust: where frames begin that are not whole, in the order of the file.
    const std::vector<unsigned long long>& broken() const { return broken_; }

    /// As `FileIOAVI::refresh`; the info given to `open` is brought up to date. Frames that were searched for
    /// without trust are not searched again.
    int refresh();

    /// As `FileIOAVI::readFrame`; one seek and one read.
    int readFrame(char* buffer, unsigned long bufferSize, unsigned long frame);

    /// As `FileIOAVI::framePosition`.
    bool framePosition(unsigned long frame, FileIOAVI::FramePosition& position) const;

    /// Bytes of a DV frame: of the first frame when that is a whole DV frame, otherwise of the largest; as
    /// the headers have it while there is no frame.
    unsigned long dataFrameSize() const;
    /// Bytes of the largest frame, or of a DV frame if that is more, with its chunk header.
    unsigned long slotSize() const;
    /// As `FileIOAVI::dataRate`.
    unsigned long dataRate() const;
    /// As `FileIOAVI::sectorSize`.
    unsigned long sectorSize() const;

    /// Why the last operation failed.
    const wchar_t* error() const { return error_; }
    /// As `FileIOAVI::systemError`.
    unsigned long systemError() const { return systemError_; }

private:
    int find(FileIOAVI::Trust trust, AVI_ODMLFileInfo& info, const AviSearch::Progress& progress);
    int search(AVI_ODMLFileInfo& info, const AviSearch::Progress& progress);
    void describe(AVI_ODMLFileInfo& info) const;
    int fail(int code, const wchar_t* format, ...);

    AviSource source_;
    AviHeader header_;
    AviIndex index_;
    std::optional<AviFrameFinder> finder_;
    std::vector<unsigned long long> broken_;
    vcore::str name_;
    wchar_t error_[80] = L"";
    unsigned long systemError_ = 0;
};
