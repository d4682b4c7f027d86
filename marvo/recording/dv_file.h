/// @file
/// What writer and reader of a raw DV recording share.
#pragma once

#include "marvo/core/file.h"
#include "marvo/core/sector_memory.h"
#include "marvo/recording/record_buffer.h"
#include "marvo/video/media_type.h"

/// What writer and reader of a raw DV recording share: the geometry of a record, a buffer for one record, and
/// the media type of the video.
///
/// A recording is a plain sequence of records of `bufferSize()` bytes, record k at byte k * bufferSize(), and
/// has no header of its own. All numbers are little-endian:
///
/// | offset | bytes      | content                                                         |
/// |--------|------------|-----------------------------------------------------------------|
/// | 0      | 4          | size of the DV frame in bytes                                   |
/// | 4      | 4          | time per frame in 100 ns                                        |
/// | 8      | frame size | the DV frame                                                    |
/// | ...    |            | undefined, up to the next multiple of the volume's sector size  |
///
/// The record size depends on the sector size of the volume, so a file is read back with the record size of
/// the volume it is read from. Files are opened without the system's cache: every transfer is a whole number
/// of sectors between sector-aligned positions and 4096-aligned memory.
///
/// Not locked: one thread at a time, or the owner's lock.
class MARVO_API dvFile : public vcore::file {
public:
    /// Bytes in front of each frame in a record.
    static constexpr unsigned long headerSize = recording::headerBytes;

    /// Frames above this size are refused.
    static constexpr unsigned long maxFrameSize = vdv::maxFrameBytes;

    dvFile();
    ~dvFile() override;

    dvFile(const dvFile&) = delete;
    dvFile& operator=(const dvFile&) = delete;

    /// Bytes per sector of the volume of the file opened last; 1 before the first.
    unsigned long alignment() const { return alignment_; }

    /// Bytes of one DV frame; 0 until set.
    unsigned long frameSize() const { return frameSize_; }

    /// Bytes of one record: frame size and header, rounded up to the alignment.
    unsigned long bufferSize() const { return bufferSize_; }

    /// The record buffer, `bufferSize()` bytes, owned by this object; null before a frame size is set.
    unsigned char* data() const { return data_.get(); }

    /// The file's video, as the frame size (and, when reading, the first record) describes it.
    const vvideo::dvMediaType& type() const { return type_; }

    /// `size` rounded up to the next multiple of the alignment.
    unsigned long alignSize(unsigned long size) const;

    /// Takes a new frame size in bytes: makes a new record buffer for the current alignment and describes the
    /// video with the default time per frame. A size above `maxFrameSize` leaves the object without a buffer.
    virtual void setFrameSize(unsigned long size);

protected:
    /// Takes the alignment from the volume that holds `name`; when the system cannot tell, the old value
    /// stays.
    void _updateAlignment(const wchar_t* name);

    /// Closes what is open, opens `name` with the given Win32 access and sharing, `fresh` as a new file, and
    /// takes the alignment: that of the volume for a `sector` of 0, and the file passes the system's cache
    /// by; otherwise `sector`, and the file is read through the cache, which suits any alignment. False when
    /// the system refuses; nothing is open then.
    bool openAligned(const wchar_t* name, unsigned long access, unsigned long share, bool fresh,
                     unsigned long sector = 0);

    /// What `type` tells.
    vvideo::dvMediaType type_;

private:
    unsigned long alignment_ = 1;
    unsigned long frameSize_ = 0;
    unsigned long bufferSize_ = 0;
    SectorBuffer data_;
};
