/// @file
/// The reader of raw DV recordings.
#pragma once

#include "marvo/recording/dv_file.h"

/// Reads a raw DV recording (layout: see `dvFile`) by frame number, also while it is still being written.
class MARVO_API dvPlayFile : public dvFile {
public:
    using dvFile::open;

    /// Opens the existing file `name` for reading; its writer may have it open as well.
    ///
    /// With a `frameSize` in bytes, that is the frame size. With 0 it is taken from the first record (144000
    /// when the record says 0 or the file is empty), as is the time per frame when the record gives one.
    /// False when the file cannot be opened or its first record names an impossible frame size.
    virtual bool open(const wchar_t* name, unsigned long frameSize);

    /// The same, with a frame size of 0, for a recording that was made on a volume with sectors of `sector`
    /// bytes (not 0) and may lie on another one now.
    bool openMadeElsewhere(const wchar_t* name, unsigned long sector);

    /// Counts the whole records in the file again; for a recording that grows. Nothing happens when closed.
    void refresh();

    /// Whole records in the file at the last `refresh`.
    unsigned long frameCount() const { return frameCount_; }

    /// Positions on a frame. A negative frame means the first; one beyond the frame count means the last; one
    /// equal to the frame count is left as it is, which is the end of the file, so that the next read fails
    /// (deliberate: a reader that follows a growing recording stops there instead of repeating the last
    /// frame). False when closed or without frames.
    bool seekFrame(long long frame);

    /// Reads the record at the current position into the record buffer. False at the end of the file and for
    /// a record that is not there as a whole.
    virtual bool readFrame();

    /// Reads the record at the current position and copies the first `size` bytes of its frame to `dest`.
    /// `*got` (when given) receives `size`. False, without moving the position, when closed or when a record
    /// cannot hold `size` bytes; false as well when the record is not there with that many bytes.
    bool read(void* dest, unsigned long size, unsigned long* got) override;

    /// `frame` wrapped into the frame count N; 0 when N is 0. A negative multiple of N yields N, not 0
    /// (deliberate).
    long long loopedFrame(long long frame) const;

    /// `frame` cut at the last frame. Negative frames come back unchanged; without frames the result is
    /// 4294967295, the 32-bit "one before none" (deliberate).
    long long shortedFrame(long long frame) const;

private:
    bool openWith(const wchar_t* name, unsigned long frameSize, unsigned long sector);
    bool readRecord(unsigned long& got);

    unsigned long frameCount_ = 0;
};
