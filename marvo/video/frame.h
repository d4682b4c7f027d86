/// @file
/// One DV frame in memory.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"

#include <memory>

namespace vcore {
class daytime;
}

namespace vvideo {

/// The number of a frame buffer that holds no frame.
inline constexpr unsigned long long noFrame = ~0ull;

/// A frame buffer with its frame number, and what has to be known of the DV layout: a frame is 10 (525/60) or
/// 12 (625/50) sequences of 150 blocks of 80 bytes. The buffer begins on a page, so it may be handed to
/// unbuffered files. Not thread-safe: the users of a ring coordinate themselves by its positions.
class MARVO_API dvFrame {
public:
    /// A frame of `size` bytes, copied from `src` unless that is null (the contents are then undefined).
    explicit dvFrame(unsigned long size = 0, const void* src = nullptr);
    ~dvFrame() = default;
    dvFrame(const dvFrame&) = delete;
    /// Copies size, contents, number and access counter.
    dvFrame& operator=(const dvFrame& source);

    /// Makes the buffer `size` bytes long; the contents are kept only when it is already. Whether there is a
    /// buffer (so false when a buffer is given up for a size of 0), or the size was right. False on a null
    /// object.
    bool init(unsigned long size);

    /// Bytes of the buffer; 0 when there was no memory for it.
    unsigned long size() const { return size_; }
    /// The buffer, null when the size is 0.
    unsigned char* data() const { return data_.get(); }
    /// The buffer, as `data`.
    operator unsigned char*() const { return data(); }
    /// The frame number; `noFrame` when none is held.
    unsigned long long id() const { return id_; }
    /// Sets the frame number.
    void setId(unsigned long long id) { id_ = id; }
    /// The access counter, maintained by the users of a ring.
    int& access() const { return access_; }

    /// Fills the frame from a sample's buffer: the frame's size, whatever the sample's data length says, but
    /// never more than the sample's buffer holds. False when there is no sample or no buffer on either side.
    bool copyFrom(IMediaSample* sample);
    /// Copies the frame into a sample's buffer, as far as that reaches. The sample's data length is not set.
    bool copyTo(IMediaSample* sample) const;
    /// Copies the smaller of both sizes; neither number nor access counter. False without `dst` or a buffer.
    bool copyTo(dvFrame* dst) const;
    /// Copies the smaller of both data lengths from one sample to another, with times and the flags
    /// discontinuity, preroll and sync point. False when a sample or its buffer is missing.
    static bool copy(IMediaSample* dst, IMediaSample* src);

    /// Paints a valid, uniformly gray DV frame; false without a buffer. Bytes behind the last whole sequence
    /// of the system that the size means are 0xFF.
    bool fillGray();
    /// The first audio sample of the left channel; 0 when the frame does not reach that far.
    int getAudioLeft() const;
    /// The same of the right channel, which begins in the middle of the frame.
    int getAudioRight() const;
    /// Reads the recording date and time from the subcode. Whether both were found; what was found is stored
    /// in `t` either way, deliberately also the year of an invalid date.
    bool getDate(vcore::daytime& t) const;
    /// Writes the recording date and time to the subcode of the frame's second half, to the precision of a
    /// frame.
    void setDate(const vcore::daytime& t);

private:
    struct MARVO_API PageFree {
        void operator()(unsigned char* page) const;
    };

    bool allocate(unsigned long size);
    int framesPerSecond() const;
    int audioSample(unsigned long block) const;

    unsigned long size_ = 0;
    std::unique_ptr<unsigned char[], PageFree> data_;
    unsigned long long id_ = noFrame;
    mutable int access_ = 0;
};

} // namespace vvideo
