/// @file
/// The writer of AVI recordings.
#pragma once

#include "marvo/avi/file_io_avi.h"
#include "marvo/recording/writer.h"

#include <memory>

namespace recording {

/// Writes an AVI file with one DV video stream, by way of `FileIOAVI`.
class AviFileWriter final : public Writer {
public:
    /// As `KindRow::create`. A frame size that is of no DV system makes, as `dvAVIFile` does, a file of
    /// 525/60 video, which takes no such frame.
    static std::unique_ptr<Writer> create(const wchar_t* name, unsigned long frameSize,
                                          long long timePerFrame_100ns, std::wstring& error);

    Kind kind() const override { return Kind::avi; }
    unsigned long bufferBytes() const override { return bufferBytes_; }
    bool write(RecordBuffer& buffer) override;
    bool flush() override { return true; }
    bool finish() override { return avi_.close() == FileIOAVI::Ok; }
    std::wstring error() const override;
    unsigned long systemError() const override { return avi_.systemError(); }
    unsigned long long freeBytes() const override { return avi_.freeBytes(); }

private:
    FileIOAVI avi_;
    unsigned long bufferBytes_ = 0;
};

} // namespace recording
