/// @file
/// A file that appears when it is whole.
#pragma once

#include <string>

namespace recording {

/// Stands for a file that is written under a temporary name beside its own ("NAME.part") and gets its own
/// when it is whole. What was not published is removed with the object. Not locked: one thread at a time.
class PartFile {
public:
    /// Why a file is not to be made.
    enum class Refusal {
        none,
        source, ///< it is the file that is read
        folder, ///< it is a folder
        exists, ///< it exists, and is not to be replaced
    };

    /// For the file `name`, which takes the place of an existing one only with `replace`; `source` is read
    /// meanwhile.
    PartFile(std::wstring name, bool replace, const std::wstring& source);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    /// Whether the file may be made.
    Refusal refusal() const { return refusal_; }
    /// The file's own name.
    const std::wstring& name() const { return name_; }
    /// Where to write: a name that no file has.
    const std::wstring& temporaryName() const { return temporary_; }
    /// Gives the file, which is closed by now, its own name. False when the system refuses (`GetLastError`).
    bool publish();

private:
    Refusal findRefusal(const std::wstring& source) const;

    const std::wstring name_;
    const bool replace_;
    const Refusal refusal_;
    std::wstring temporary_;
    bool published_ = false;
};

} // namespace recording
