#include "marvo/recording/sound_source.h"

#include "marvo/avi/avi_sound_reader.h"
#include "marvo/dv/sound.h"
#include "marvo/recording/avi_file_writer.h"
#include "marvo/recording/sound_track.h"

#include <vector>

namespace recording {

namespace {

/// The four channels of a camera are two pairs: in front and behind.
constexpr unsigned long quadMask = 0x33;

class FrameSound final : public SoundSource {
public:
    FrameSound(const FileIOAVI::Sound& format, AviFileWriter::FrameRate video)
        : SoundSource(format), track_(format.rate, format.channels, video.rate, video.scale) {}

    std::span<const unsigned char> next(unsigned long long, vdv::FrameBytes frame) override {
        const bool sounds = sound_.decode(frame.data(), static_cast<unsigned long>(frame.size()));
        const SoundTrack::Piece piece{sound_.data(), sound_.samples(), sound_.channels(), sound_.rate()};
        const std::span<const short> samples = track_.next(sounds ? &piece : nullptr);
        return {reinterpret_cast<const unsigned char*>(samples.data()), samples.size_bytes()};
    }

private:
    dvSound sound_;
    SoundTrack track_;
};

class StreamSound final : public SoundSource {
public:
    explicit StreamSound(std::unique_ptr<AviSoundReader> reader)
        : SoundSource(reader->format()), reader_(std::move(reader)) {}

    std::span<const unsigned char> next(unsigned long long number, vdv::FrameBytes) override {
        return reader_->read(static_cast<unsigned long>(number));
    }

private:
    std::unique_ptr<AviSoundReader> reader_;
};

/// A frame from `first` to `last` in which there is sound, decoded into `sound`. Looks at the first, and at
/// others ever further away, and spread over all.
bool findSound(const Reader& from, unsigned long long first, unsigned long long last, dvSound& sound) {
    constexpr unsigned long long spread = 64;
    std::vector<unsigned char> frame(from.frameSize());
    const auto sounds = [&](unsigned long long number) {
        const std::size_t got = from.readHead(number, frame.data(), frame.size());
        return sound.decode(frame.data(), static_cast<unsigned long>(got));
    };
    const unsigned long long frames = last - first + 1;
    for (unsigned long long step = 0; step < frames; step = 2 * step + 1) {
        if (sounds(first + step)) {
            return true;
        }
    }
    for (unsigned long long i = 1; i <= spread; ++i) {
        if (sounds(first + (frames - 1) * i / spread)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::unique_ptr<SoundSource> SoundSource::inFrames(const Reader& from, unsigned long long first,
                                                   unsigned long long last) {
    dvSound sound;
    if (!findSound(from, first, last, sound)) {
        return nullptr;
    }
    const AviFileWriter::FrameRate video =
        AviFileWriter::frameRateOf(vdv::systemOf(from.frameSize()) == &vdv::system625);
    FileIOAVI::Sound format;
    format.rate = sound.rate();
    format.channels = sound.channels();
    format.channelMask = sound.channels() == 4 ? quadMask : 0;
    format.mostSamples = SoundTrack(format.rate, format.channels, video.rate, video.scale).mostSamples();
    return std::make_unique<FrameSound>(format, video);
}

std::unique_ptr<SoundSource> SoundSource::inStream(const Reader& from, std::wstring& note) {
    if (from.kind() != Kind::avi) {
        return nullptr;
    }
    auto reader = std::make_unique<AviSoundReader>();
    const AviSoundReader::Stream found =
        reader->open(from.name().c_str(), static_cast<unsigned long>(from.frames()));
    if (found == AviSoundReader::Stream::unreadable) {
        note = L"the sound stream of '" + from.name() + L"' " + reader->fault();
    } else if (reader->streams() > 1) {
        note = L"'" + from.name() + L"' has " + std::to_wstring(reader->streams()) +
               L" sound streams, of which the first is taken";
    }
    return found == AviSoundReader::Stream::readable ? std::make_unique<StreamSound>(std::move(reader))
                                                     : nullptr;
}

} // namespace recording
