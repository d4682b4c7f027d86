#include "app/window/sound_output.h"

namespace app {

bool SoundOutput::play(const std::int16_t* samples, size_t count, unsigned rate, unsigned channels) {
    if (rate == 0 || channels == 0 || count == 0) {
        return true;
    }
    if ((rate != rate_ || channels != channels_) && !open(rate, channels)) {
        return false;
    }
    if (device_ == nullptr) {
        return false;
    }
    collect();
    if (waiting_ > static_cast<size_t>(rate) * channels / 4) {
        return true;
    }
    Block& block = blocks_.emplace_back();
    block.samples.assign(samples, samples + count);
    block.header.lpData = reinterpret_cast<char*>(block.samples.data());
    block.header.dwBufferLength = static_cast<DWORD>(count * sizeof *samples);
    if (waveOutPrepareHeader(device_, &block.header, sizeof block.header) != MMSYSERR_NOERROR) {
        blocks_.pop_back();
        return true;
    }
    waiting_ += count;
    waveOutWrite(device_, &block.header, sizeof block.header);
    return true;
}

void SoundOutput::close() {
    if (device_ != nullptr) {
        waveOutReset(device_);
        collect();
        waveOutClose(device_);
        device_ = nullptr;
    }
    blocks_.clear();
    waiting_ = 0;
    rate_ = channels_ = 0;
}

bool SoundOutput::open(unsigned rate, unsigned channels) {
    close();
    WAVEFORMATEX format = {};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = static_cast<WORD>(channels);
    format.nSamplesPerSec = rate;
    format.wBitsPerSample = 16;
    format.nBlockAlign = static_cast<WORD>(channels * 2);
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    rate_ = rate;
    channels_ = channels;
    const MMRESULT result = waveOutOpen(&device_, WAVE_MAPPER, &format, 0, 0, CALLBACK_NULL);
    if (result != MMSYSERR_NOERROR) {
        wchar_t text[MAXERRORLENGTH] = L"";
        waveOutGetErrorTextW(result, text, MAXERRORLENGTH);
        explanation_ = text;
        device_ = nullptr;
        return false;
    }
    explanation_.clear();
    return true;
}

void SoundOutput::collect() {
    for (auto block = blocks_.begin(); block != blocks_.end();) {
        if ((block->header.dwFlags & WHDR_DONE) == 0) {
            ++block;
            continue;
        }
        waveOutUnprepareHeader(device_, &block->header, sizeof block->header);
        waiting_ -= block->samples.size();
        block = blocks_.erase(block);
    }
}

} // namespace app
