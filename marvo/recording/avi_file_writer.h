/// @file
/// The writer of AVI recordings.
#pragma once

#include "marvo/avi/file_io_avi.h"
#include "marvo/recording/writer.h"

#include <memory>
#include <span>

namespace recording {

/// Writes an AVI file with one DV video stream, and one of sound when asked to, by way of `FileIOAVI`.
class AviFileWriter final : public Writer {
public:
    /// As `KindRow::create`. A frame size that is of no DV system makes, as `dvAVIFile` does, a file of
    /// 525/60 video, which takes no such frame.
    static std::unique_ptr<Writer> create(const wchar_t* name, unsigned long frameSize,
                                          long long timePerFrame_100ns, std::wstring& error);

    /// The same with a sound stream, which the engine's own recordings have not.
    static std::unique_ptr<AviFileWriter> createWithSound(const wchar_t* name, unsigned long frameSize,
                                                          const FileIOAVI::Sound& sound, std::wstring& error);

    /// As `write`, with the sound of the frame's time behind it, as `FileIOAVI::writeFrame` takes it.
    bool writeWithSound(RecordBuffer& buffer, std::span<const unsigned char> sound);

    /// Frames per second of such a file, as a fraction.
    struct FrameRate {
        unsigned long rate, scale;
    };
    static constexpr FrameRate frameRateOf(bool is625) { return {is625 ? 2500ul : 2997ul, 100}; }

    Kind kind() const override { return Kind::avi; }
    unsigned long bufferBytes() const override { return bufferBytes_; }
    bool write(RecordBuffer& buffer) override;
    bool flush() override { return true; }
    bool finish() override { return avi_.close() == FileIOAVI::Ok; }
    std::wstring error() const override;
    unsigned long systemError() const override { return avi_.systemError(); }
    unsigned long long freeBytes() const override { return avi_.freeBytes(); }

private:
    static std::unique_ptr<AviFileWriter> createWith(const wchar_t* name, unsigned long frameSize,
                                                     const FileIOAVI::Sound* sound, std::wstring& error);

    FileIOAVI avi_;
    unsigned long bufferBytes_ = 0;
};

} // namespace recording
