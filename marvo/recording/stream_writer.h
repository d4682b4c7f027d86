/// @file
/// The writer of bare DV streams.
#pragma once

#include "marvo/recording/plain_writer.h"

#include <memory>

namespace recording {

/// Writes frames one behind the other and nothing else.
class StreamWriter final : public PlainWriter {
public:
    /// As `KindRow::create`.
    static std::unique_ptr<Writer> create(const wchar_t* name, unsigned long frameSize,
                                          long long timePerFrame_100ns, std::wstring& error);

    Kind kind() const override { return Kind::stream; }
    unsigned long bufferBytes() const override { return headerBytes + frameSize_; }
    bool write(RecordBuffer& buffer) override;

private:
    unsigned long frameSize_ = 0;
};

} // namespace recording
