#include "app/window/sound_follower.h"

#include <utility>

namespace app {

void SoundFollower::meter(
    const std::function<void(const std::int16_t*, size_t count, unsigned channels)>& take) {
    std::vector<std::int16_t> samples;
    unsigned channels = 0;
    {
        const std::lock_guard guard(resultLock_);
        samples.swap(samples_);
        channels = channels_;
    }
    if (!samples.empty()) {
        take(samples.data(), samples.size(), channels);
    }
}

std::wstring SoundFollower::complaint() {
    const std::lock_guard guard(resultLock_);
    return std::exchange(complaint_, {});
}

dvAspect SoundFollower::aspect() {
    const std::lock_guard guard(resultLock_);
    return aspect_;
}

void SoundFollower::take(const std::vector<unsigned char>& bytes) {
    const dvAspect aspect = dvFrameNotes::aspect(bytes.data(), bytes.size());
    {
        const std::lock_guard guard(resultLock_);
        aspect_ = aspect;
    }
    if (!sound_.decode(bytes.data(), static_cast<unsigned long>(bytes.size()))) {
        return;
    }
    const size_t count = sound_.samples() * sound_.channels();
    {
        const std::lock_guard guard(resultLock_);
        samples_.assign(sound_.data(), sound_.data() + count);
        channels_ = sound_.channels();
    }
    if (muted_) {
        output_.close();
        return;
    }
    if (!output_.play(sound_.data(), count, sound_.rate(), sound_.channels()) && !complained_) {
        complained_ = true;
        const std::lock_guard guard(resultLock_);
        complaint_ = output_.explanation();
    }
}

void SoundFollower::rest() {
    output_.close();
}

} // namespace app
