#pragma once

#include "replay/file_io_avi.h"

/// The writing half of `FileIOAVI`: lays out headers, frame slots, indexes and pieces.
///
/// Not locked: one thread at a time.
class AviWriter {
public:
    /// As `FileIOAVI::create`; fills `info`, which must outlive the writer and is kept current.
    int create(const wchar_t* name, const FileIOAVI::Video& video, bool unbuffered, AVI_ODMLFileInfo& info);

    /// As `FileIOAVI::writeFrame`.
    int writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize);

    /// As `FileIOAVI::close`.
    int close();

    unsigned long dataFrameSize() const { return 0; }
    unsigned long slotSize() const { return 0; }
    unsigned long dataRate() const { return 0; }
    unsigned long sectorSize() const { return 1; }

    /// Why the last operation failed.
    const wchar_t* error() const { return L""; }
};
