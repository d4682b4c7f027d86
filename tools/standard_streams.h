/// @file
/// Recordings through pipes.
#pragma once

#include "marvo/recording/writer.h"

#include <memory>
#include <string>

namespace dvrec {

/// Whether a file argument means the standard input or output: "-".
bool isPipe(const std::wstring& name);

/// The file to read for a file argument: the name itself, and for "-" a temporary file with everything that
/// comes from the standard input, which is read to its end at the first call. The file goes with the program.
/// Throws the `Failure` when there is no input, or no room for it.
const std::wstring& inputPath(const std::wstring& name);

/// Writes frames to the standard output as a DV stream, which needs no place to go back to.
class PipeWriter final : public recording::Writer {
public:
    recording::Kind kind() const override { return recording::Kind::stream; }
    unsigned long bufferBytes() const override { return recording::headerBytes; }
    bool write(recording::RecordBuffer& buffer) override;
    bool flush() override { return true; }
    bool finish() override { return true; }
    std::wstring error() const override;
    unsigned long systemError() const override { return systemError_; }
    unsigned long long freeBytes() const override { return ~0ull; }

private:
    unsigned long systemError_ = 0;
};

/// Throws the `Failure` when the output of a command is "-", which takes `what` but no pipe.
void refusePipe(const std::wstring& name, const std::string& what);

} // namespace dvrec
