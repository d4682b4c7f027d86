/// @file
/// The sound in a DV frame.
#pragma once

#include "marvo/core/platform.h"

#include <memory>

/// The sound of a DV frame as 16-bit samples. A camera puts into each frame the sound of its time: 48000,
/// 44100 or 32000 samples per second of 16 bits in two channels, or 32000 of 12 bits in up to four; frames of
/// 50 and 100 Mbit/s hold twice and four times as many channels. 12-bit samples, which are coarser the louder
/// they are, are expanded to 16 bits as the standard says.
///
/// How many samples a frame brings differs from frame to frame: by a fixed pattern when the camera's sound is
/// locked to its picture, freely when it is not, and then they are not exactly `rate` in a second of video.
///
/// Samples that the camera or the tape marked as lost, and those of blocks that are not there, are replaced
/// by a straight line between their neighbours.
///
/// Not locked: one thread at a time.
class MARVO_API dvSound {
public:
    /// The most samples that a channel has in a frame.
    static constexpr unsigned long mostSamples = 1944;
    /// The most channels that are read.
    static constexpr unsigned mostChannels = 8;

    dvSound();
    ~dvSound();
    dvSound(const dvSound&) = delete;
    dvSound& operator=(const dvSound&) = delete;

    /// Reads the sound of a whole frame of `size` bytes. False when there is none or it cannot be read, with
    /// the reason in `explanation`; there are no samples then.
    bool decode(const void* frame, unsigned long size);

    /// Nominal samples per second of each channel: 48000, 44100 or 32000; 0 without sound.
    unsigned long rate() const { return rate_; }
    /// Channels: 1, 2, 4 or more; 0 without sound. Those that the camera says hold nothing do not count.
    unsigned channels() const { return channels_; }
    /// Bits of a sample in the frame, 16 or 12; 0 without sound.
    unsigned bits() const { return bits_; }
    /// Whether the camera locked the sound to the picture.
    bool locked() const { return locked_; }
    /// Samples of each channel; 0 without sound.
    unsigned long samples() const { return samples_; }
    /// The samples, `samples() * channels()` of them: one of each channel, then the next of each, the first
    /// channel (left) in front. Owned by the object and valid until the next `decode`; null before the first
    /// sound.
    const short* data() const { return data_.get(); }
    /// Samples of all channels that were lost and have been replaced.
    unsigned long concealed() const { return concealed_; }

    /// Why the last `decode` found no sound, as a predicate ("holds no sound"); empty when it did.
    const wchar_t* explanation() const { return explanation_; }

private:
    bool refuse(const wchar_t* why);

    std::unique_ptr<short[]> data_;
    unsigned long rate_ = 0;
    unsigned channels_ = 0;
    unsigned bits_ = 0;
    bool locked_ = false;
    unsigned long samples_ = 0;
    unsigned long concealed_ = 0;
    const wchar_t* explanation_ = L"";
};
