/// @file
/// The system's files and drives.
#pragma once

#include "app/disk.h"

namespace app {

/// Disk on the system's own files. Paths may be longer than 260 characters.
class SystemDisk final : public Disk {
public:
    bool exists(const std::wstring& name) override;
    bool read(const std::wstring& name, std::string& content, std::wstring& why) override;
    bool replace(const std::wstring& name, const std::string& content, std::wstring& why) override;
    bool remove(const std::wstring& name, std::wstring& why) override;
    bool makeFolder(const std::wstring& name, std::wstring& why) override;
    std::vector<std::wstring> files(const std::wstring& folder) override;
    std::optional<std::uint64_t> freeBytes(const std::wstring& folder) override;
};

} // namespace app
