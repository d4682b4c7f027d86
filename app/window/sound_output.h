/// @file
/// The loudspeaker.
#pragma once

#include "marvo.h"

#include <mmsystem.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace app {

/// Plays sound as its frames come. Without a sound device it stays silent and says so once. One thread.
class SoundOutput {
public:
    SoundOutput() = default;
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;
    ~SoundOutput() { close(); }

    /// Plays these samples (of all channels in turn) behind those that came before. What has piled up for
    /// more than a quarter of a second is left out, so that the sound stays with the picture. False when
    /// there is no device for it; `explanation` says why, and the next try is a new rate away or `close`.
    bool play(const std::int16_t* samples, size_t count, unsigned rate, unsigned channels);
    /// Falls silent at once and gives the device back.
    void close();
    /// Why there is no sound; empty while there is.
    const std::wstring& explanation() const { return explanation_; }

private:
    struct Block {
        WAVEHDR header = {};
        std::vector<std::int16_t> samples;
    };

    bool open(unsigned rate, unsigned channels);
    void collect();

    HWAVEOUT device_ = nullptr;
    unsigned rate_ = 0;
    unsigned channels_ = 0;
    std::list<Block> blocks_; // the addresses are the device's while it plays them
    size_t waiting_ = 0;      // samples of all channels that are not played yet
    std::wstring explanation_;
};

} // namespace app
