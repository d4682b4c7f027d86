#pragma once

#include "core/platform.h"

/// The engine's door to DV AVI recordings. The container itself is not built yet: every file is refused, so that a
/// recording or a replay named with ".avi" fails at once and with nothing lost, instead of writing something else
/// under that name.
class MARVO_API dvAVIFile {
public:
    /// Creates a new file for frames of `frameSize` bytes. Always false for now.
    bool create(const wchar_t* name, unsigned long frameSize);

    /// Opens an existing file for reading. Always false for now.
    bool open(const wchar_t* name);

    /// Finishes and closes the file; harmless when none is open.
    void close();

    /// Whether a file is open for reading or created for writing.
    bool opened() const { return false; }

    /// Appends the frame of `frameSize` bytes that stands behind the 8-byte record header in `buffer`, which holds
    /// `bufferSize` bytes. False when no file is created.
    bool writeFrame(char* buffer, unsigned long frameSize, unsigned long bufferSize);

    /// Reads the current frame behind 8 header bytes into `buffer` of `bufferSize` bytes. False when no file is open.
    bool readFrame(char* buffer, unsigned long bufferSize, unsigned long frame);

    /// Makes `frame`, modulo the number of frames, the current one.
    void seekFrame(unsigned long frame);

    /// Frames in the file; 0 when none is open.
    unsigned long frames() const { return 0; }

    /// Bytes of one DV frame; 0 when none is open.
    unsigned long getDataFrameSize() const { return 0; }

    /// Bytes that a buffer for `writeFrame` and `readFrame` needs; 0 when none is open.
    unsigned long getAVIFrameSize() const { return 0; }
};
