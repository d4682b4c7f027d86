/// @file
/// The file that a command makes.
#pragma once

#include "tools/failure.h"

#include "marvo/recording/part_file.h"

#include <string>

namespace dvrec {

/// Stands for a file that is written under a temporary name beside its own and gets its own when it is whole.
class OutputFile {
public:
    /// Chooses the temporary name, one that is free. Throws the `Failure` when the file exists (and `replace`
    /// is not set) or is `source`, the one that is read.
    OutputFile(const std::wstring& name, bool replace, const std::wstring& source);

    /// Where to write. What is there is removed with the object, unless it was published.
    const std::wstring& temporaryName() const { return file_.temporaryName(); }
    const std::wstring& name() const { return file_.name(); }
    /// Gives the file, which is closed by now, its own name. Throws the `Failure` when the system refuses.
    void publish();

private:
    recording::PartFile file_;
};

/// The `Failure` for an output file that cannot be written.
Failure cannotWrite(const std::wstring& name, const std::string& reason);

} // namespace dvrec
