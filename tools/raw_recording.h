/// @file
/// The engine's own recordings.
#pragma once

#include "tools/recording.h"

#include <cstdint>

namespace dvrec {

/// A raw recording (layout: see `dvFile`). Unlike `dvPlayFile` it is read with any record size, so that files
/// from other volumes can be read as well.
class RawRecording final : public Recording {
public:
    /// What each record begins with.
    struct Header {
        std::uint32_t frameSize = 0;
        std::uint32_t timePerFrame_100ns = 0;
    };

    /// Takes the frame size from the first record. With a `sector` of 0 the record size is the one at which a
    /// second record stands, else the one that the file's volume would have.
    RawRecording(InputFile file, unsigned long sector);

    /// Whether the bytes are the begin of a record: the size of a DV frame, the time, and the begin of such a
    /// frame.
    static bool isRecordStart(FrameBytes head);

    Kind kind() const override { return Kind::raw; }
    unsigned long frames() const override { return frames_; }
    Place place(unsigned long frame) const override;

    /// Bytes from record to record.
    unsigned long recordSize() const { return recordSize_; }
    /// Bytes of a sector of the volume on which the recording was made, as far as the record size tells.
    unsigned long sector() const { return sector_; }
    /// Bytes behind the last whole record.
    unsigned long long tail() const;
    /// The header of record `frame`, which is less than `frames`.
    Header header(unsigned long frame) const;

private:
    unsigned long findSector() const;

    Header first_;
    unsigned long sector_ = 0;
    unsigned long recordSize_ = 0;
    unsigned long frames_ = 0;
};

} // namespace dvrec
