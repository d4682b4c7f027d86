/// @file
/// Files and drives as the application uses them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// What the application does with files; a fake one takes its place in tests. Names are whole paths. What
/// fails leaves the reason in words in `why`, without a full stop.
class Disk {
public:
    virtual ~Disk() = default;

    /// Whether there is a file or folder of that name.
    virtual bool exists(const std::wstring& name) = 0;
    /// Reads a whole file of at most 16 MiB.
    virtual bool read(const std::wstring& name, std::string& content, std::wstring& why) = 0;
    /// Replaces a file, or makes it: the content is written to a file beside it, brought to the disk, and
    /// renamed, so that at every moment either the old or the new content is there.
    virtual bool replace(const std::wstring& name, const std::string& content, std::wstring& why) = 0;
    /// Deletes a file.
    virtual bool remove(const std::wstring& name, std::wstring& why) = 0;
    /// Makes a folder and those above it; true when it is there already.
    virtual bool makeFolder(const std::wstring& name, std::wstring& why) = 0;
    /// Names (without folder) of the files in a folder, sorted.
    virtual std::vector<std::wstring> files(const std::wstring& folder) = 0;
    /// Free bytes on the drive of a folder; nothing when it does not tell.
    virtual std::optional<std::uint64_t> freeBytes(const std::wstring& folder) = 0;
};

/// `folder` and `name` with one separator between them.
std::wstring joined(const std::wstring& folder, const std::wstring& name);
/// The part of a path behind its last separator.
std::wstring nameOf(const std::wstring& path);
/// The part in front of it; empty when there is none.
std::wstring folderOf(const std::wstring& path);
/// Whether two paths are the same but for letter case and kind of separators.
bool samePath(const std::wstring& a, const std::wstring& b);

} // namespace app
