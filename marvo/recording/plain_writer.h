/// @file
/// What the writers of files without an index share.
#pragma once

#include "marvo/recording/rec_file.h"
#include "marvo/recording/writer.h"

namespace recording {

/// Appends equal parts to a file that needs no completion.
class PlainWriter : public Writer {
public:
    bool flush() override;
    bool finish() override;
    std::wstring error() const override;

protected:
    PlainWriter() = default;

    /// Writes `bytes` bytes behind what was written before. False when they could not be written whole; the
    /// next part takes their place.
    bool append(const void* data, unsigned long bytes);
    /// Notes a failure for `error`; false.
    bool fail(unsigned long systemError);

    dvRecFile file_;

private:
    unsigned long long end_ = 0;
    unsigned long systemError_ = ERROR_SUCCESS;
};

} // namespace recording
