/// @file
/// What the readers of files without an index share.
#pragma once

#include "marvo/recording/reader.h"

namespace recording {

/// Reads a file of equal parts, one per frame, and nothing else.
class PlainReader : public Reader {
public:
    bool place(unsigned long long frame, Place& place) const override;
    /// Tells of bytes behind the last whole part.
    unsigned long long check(const FaultCall& fault, const ProgressCall& progress,
                             unsigned long mostFaults) const override;

protected:
    using Reader::Reader;

    std::string whatIsMissing() const override;
    /// Bytes of a part.
    virtual unsigned long partBytes() const = 0;
    /// Bytes in a part in front of its frame.
    virtual unsigned long bytesInFront() const = 0;
    /// Where part `number` stands.
    unsigned long long offset(unsigned long long number) const { return number * partBytes(); }

private:
    unsigned long long tail() const;
};

} // namespace recording
