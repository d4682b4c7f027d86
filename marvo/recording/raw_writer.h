/// @file
/// The writer of the engine's own recordings.
#pragma once

#include "marvo/recording/plain_writer.h"

#include <memory>

namespace recording {

/// Writes a raw recording, by way of `dvRecFile`.
class RawWriter final : public PlainWriter {
public:
    /// As `KindRow::create`.
    static std::unique_ptr<Writer> create(const wchar_t* name, unsigned long frameSize,
                                          long long timePerFrame_100ns, std::wstring& error);

    Kind kind() const override { return Kind::raw; }
    unsigned long bufferBytes() const override { return recordBytes_; }
    bool write(RecordBuffer& buffer) override;

private:
    RecordHeader header_{};
    unsigned long recordBytes_ = 0;
};

} // namespace recording
