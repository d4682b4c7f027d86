/// @file
/// What the writers of files without an index share.
#pragma once

#include "marvo/recording/rec_file.h"
#include "marvo/recording/writer.h"

namespace recording {

/// Appends equal parts to a file that needs no completion.
class PlainWriter : public Writer {
public:
    /// As `finish`.
    ~PlainWriter() override;

    bool flush() override;
    bool finish() override;
    std::wstring error() const override;
    unsigned long systemError() const override { return systemError_; }
    unsigned long long freeBytes() const override;

protected:
    PlainWriter() = default;

    /// Writes `bytes` bytes behind what was written before. False when they could not be written whole: what
    /// was is cut off again, and the next part takes their place.
    bool append(const void* data, unsigned long bytes);
    /// Notes a failure for `error`; false.
    bool fail(unsigned long systemError);

    dvRecFile file_;

private:
    bool cutTail();

    unsigned long long end_ = 0;
    /// Whether there may be a piece of a part behind the end, also because the thread was killed.
    bool torn_ = false;
    unsigned long systemError_ = ERROR_SUCCESS;
};

} // namespace recording
