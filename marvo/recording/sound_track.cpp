#include "marvo/recording/sound_track.h"

#include <algorithm>

namespace recording {

SoundTrack::SoundTrack(unsigned long rate, unsigned channels, unsigned long frameRate,
                       unsigned long frameScale)
    : rate_(rate), channels_(channels), frameRate_(frameRate), frameScale_(frameScale),
      most_(2 * (rate / (frameRate / frameScale) + 1)) {
    samples_.reserve(std::size_t{most_} * channels_);
}

/// Where in the stream a frame begins.
unsigned long long SoundTrack::placeOf(unsigned long long frame) const {
    return (frame * frameScale_ * rate_ + frameRate_ / 2) / frameRate_;
}

/// How many samples the next frame gets that would bring `natural` of them.
unsigned long SoundTrack::lengthFor(unsigned long natural) const {
    const auto picture = static_cast<long long>(placeOf(frames_ + 1));
    const auto sound = static_cast<long long>(written_);
    const auto slack = static_cast<long long>(placeOf(1) / 2);
    const long long end = std::clamp(sound + natural, picture - slack, picture + slack);
    return static_cast<unsigned long>(std::clamp(end - sound, 0ll, static_cast<long long>(most_)));
}

void SoundTrack::stretch(const Piece& piece, unsigned long length) {
    if (length == piece.samples && piece.channels == channels_) {
        samples_.assign(piece.data, piece.data + std::size_t{length} * channels_);
        return;
    }
    // Places in the piece are counted in 2^-32 samples; what is between two samples in 2^-16, which is fine
    // enough.
    const unsigned long long step =
        (static_cast<unsigned long long>(piece.samples) << 32) / std::max(length, 1ul);
    unsigned long long place = 0;
    for (unsigned long i = 0; i < length; ++i, place += step) {
        const auto sample = static_cast<unsigned long>(place >> 32);
        const auto share = static_cast<int>(place >> 16 & 0xFFFF);
        const short* const here = piece.data + std::size_t{sample} * piece.channels;
        const short* const behind = sample + 1 < piece.samples ? here + piece.channels : here;
        for (unsigned channel = 0; channel < channels_; ++channel) {
            const unsigned from = piece.channels == 1 && channel < 2 ? 0 : channel;
            const bool there = from < piece.channels;
            const long long difference =
                there ? static_cast<long long>(behind[from] - here[from]) * share : 0;
            samples_.push_back(there ? static_cast<short>(here[from] + ((difference + 0x8000) >> 16))
                                     : short{0});
        }
    }
}

std::span<const short> SoundTrack::next(const Piece* piece) {
    samples_.clear();
    if (piece && piece->samples > 0 && piece->rate > 0) {
        const auto natural = static_cast<unsigned long>(
            (static_cast<unsigned long long>(piece->samples) * rate_ + piece->rate / 2) / piece->rate);
        stretch(*piece, lengthFor(natural));
    } else {
        const unsigned long long picture = placeOf(frames_ + 1);
        samples_.resize(static_cast<std::size_t>(picture - std::min(picture, written_)) * channels_);
    }
    written_ += samples_.size() / channels_;
    ++frames_;
    return samples_;
}

} // namespace recording
