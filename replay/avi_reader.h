#pragma once

#include "replay/file_io_avi.h"

/// The reading half of `FileIOAVI`: finds the frames of a file and reads them.
///
/// Not locked: one thread at a time.
class AviReader {
public:
    /// As `FileIOAVI::open`; fills `info`.
    int open(const wchar_t* name, FileIOAVI::Trust trust, AVI_ODMLFileInfo& info);

    /// As `FileIOAVI::refresh`; `info` is brought up to date.
    int refresh(AVI_ODMLFileInfo& info);

    /// As `FileIOAVI::readFrame`.
    int readFrame(char* buffer, unsigned long bufferSize, unsigned long frame);

    /// As `FileIOAVI::framePosition`.
    bool framePosition(unsigned long frame, FileIOAVI::FramePosition& position) const;

    unsigned long dataFrameSize() const { return 0; }
    unsigned long slotSize() const { return 0; }
    unsigned long dataRate() const { return 0; }
    unsigned long sectorSize() const { return 1; }

    /// Why the last operation failed.
    const wchar_t* error() const { return L""; }
};
