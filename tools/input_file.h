/// @file
/// The file that a command reads.
#pragma once

#include "marvo.h"

#include <span>
#include <string>

namespace dvrec {

/// An existing file, open for reading while others may write it. One thread.
class InputFile {
public:
    /// Opens it; throws the `Failure` when the system refuses.
    explicit InputFile(const std::wstring& name);

    const std::wstring& name() const { return name_; }
    /// Bytes of the file at this moment.
    unsigned long long size() const;
    /// Reads from a byte offset as much as there is; the bytes that were read.
    size_t read(unsigned long long offset, std::span<unsigned char> to) const;
    /// Whether somebody has it open for writing.
    bool isBeingWritten() const;
    /// Whether `other` names the same file, by whatever path.
    bool isSameFile(const std::wstring& other) const;

private:
    std::wstring name_;
    vcore::handle file_;
};

} // namespace dvrec
