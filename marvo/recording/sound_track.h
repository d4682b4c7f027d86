/// @file
/// Sound that keeps step with the picture.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace recording {

/// Makes one even stream of the sound that frames bring. The stream keeps its rate and its channels, and
/// stays within half a frame of the picture however long it gets:
///
/// - A frame's own samples are taken as they are as long as the difference to the picture that has come
/// together
///   stays below half a frame. A camera whose sound is not locked to its picture brings a few samples too
///   many or too few per second; what would go beyond is taken out or put in by stretching that one frame's
///   sound, mostly by a single sample, which nobody hears. Stretching every frame by its share would lose
///   treble all the time, and a step back to no difference at all would be heard as a jump.
/// - A frame without sound becomes silence, as long as it takes to be where the picture is.
/// - Sound of another rate is brought to the stream's by straight lines between its samples: duller, but
/// there.
/// - Channels that the stream has not are left out, those that the frame has not are silent; a single channel
/// is
///   heard in both of a pair.
class SoundTrack {
public:
    /// What a frame brings: `samples` of each channel, interleaved.
    struct Piece {
        const short* data;
        unsigned long samples;
        unsigned channels;
        unsigned long rate; ///< nominal samples per second
    };

    /// A stream of `rate` samples per second in `channels` channels beside video of `frameRate / frameScale`
    /// frames per second.
    SoundTrack(unsigned long rate, unsigned channels, unsigned long frameRate, unsigned long frameScale);

    /// The next frame's part of the stream, interleaved, for what that frame brings; null for one without
    /// sound. Valid until the next call.
    std::span<const short> next(const Piece* piece);

    /// The most samples of each channel that `next` gives.
    unsigned long mostSamples() const { return most_; }

private:
    unsigned long long placeOf(unsigned long long frame) const;
    unsigned long lengthFor(unsigned long natural) const;
    void stretch(const Piece& piece, unsigned long length);

    const unsigned long rate_;
    const unsigned channels_;
    const unsigned long frameRate_, frameScale_;
    const unsigned long most_;
    unsigned long long frames_ = 0;
    unsigned long long written_ = 0; ///< samples of each channel
    std::vector<short> samples_;
};

} // namespace recording
