/// @file
/// Where the sound of an exported file comes from.
#pragma once

#include "marvo/avi/file_io_avi.h"
#include "marvo/dv/layout.h"
#include "marvo/recording/reader.h"

#include <memory>
#include <span>
#include <string>

namespace recording {

/// Sound for the frames of a recording, in their order. Not locked: one thread at a time; it may be another
/// than the one that reads the recording's frames meanwhile.
class SoundSource {
public:
    virtual ~SoundSource() = default;
    SoundSource(const SoundSource&) = delete;
    SoundSource& operator=(const SoundSource&) = delete;

    /// The sound in the frames of `from`, or null when there is none; for the frames `first` to `last`. Looks
    /// at the first of them for what the stream is like, and when that has no sound, at some others. What a
    /// camera changes later is brought to that (see `SoundTrack`).
    static std::unique_ptr<SoundSource> inFrames(const Reader& from, unsigned long long first,
                                                 unsigned long long last);

    /// The recording's own sound stream, or null when there is none or it cannot be read; `note` then says
    /// what somebody might miss, without a full stop.
    static std::unique_ptr<SoundSource> inStream(const Reader& from, std::wstring& note);

    /// What the stream is like.
    const FileIOAVI::Sound& format() const { return format_; }
    /// The sound of the time of frame `number`, whose bytes are `frame`. Valid until the next call.
    virtual std::span<const unsigned char> next(unsigned long long number, vdv::FrameBytes frame) = 0;

protected:
    explicit SoundSource(const FileIOAVI::Sound& format) : format_(format) {}

private:
    const FileIOAVI::Sound format_;
};

} // namespace recording
