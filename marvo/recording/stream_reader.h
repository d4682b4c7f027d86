/// @file
/// The reader of bare DV streams.
#pragma once

#include "marvo/dv/layout.h"
#include "marvo/recording/kinds.h"
#include "marvo/recording/plain_reader.h"

namespace recording {

/// DV frames of one size, one behind the other. The size is taken from the first frame.
class StreamReader final : public PlainReader {
public:
    /// As `KindRow::open`.
    static std::unique_ptr<Reader> open(const wchar_t* name, const OpenOptions& options, std::wstring& error);

    /// Whether a DV frame starts so.
    static bool isStreamStart(const unsigned char* head, std::size_t bytes);
    /// Bytes of the frame that starts at `offset`, of 25 or 50 Mbit/s, as its own header says.
    static unsigned long frameSizeAt(const InputFile& file, unsigned long long offset);
    /// The same for one in memory, of which `largestFrame` bytes and a few behind tell.
    static unsigned long frameSizeOf(vdv::FrameBytes bytes);
    static constexpr unsigned long largestFrame = 2 * vdv::palFrameBytes;

    Kind kind() const override { return Kind::stream; }
    unsigned long long frames() const override { return frames_; }
    void refresh() override;
    unsigned long frameSize() const override { return frameSize_; }
    unsigned long bufferBytes() const override { return headerBytes + frameSize_; }
    bool read(unsigned long long frame, RecordBuffer& buffer) override;
    std::wstring error() const override { return error_; }
    void abandon() override { input_.close(); }

protected:
    unsigned long partBytes() const override { return frameSize_; }
    unsigned long bytesInFront() const override { return 0; }

private:
    explicit StreamReader(const wchar_t* name) : PlainReader(name) {}

    InputFile input_;
    unsigned long frameSize_ = 0;
    unsigned long long frames_ = 0;
    const wchar_t* error_ = L"";
};

} // namespace recording
