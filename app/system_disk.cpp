#include "app/system_disk.h"

#include "app/system_text.h"
#include "marvo.h"

#include <algorithm>

namespace app {

namespace {

constexpr unsigned long long mostBytes = 16ull << 20;

/// A path as the system takes it when it may be longer than 260 characters: absolute ones only.
std::wstring longPath(const std::wstring& name) {
    const bool drive = name.size() > 2 && name[1] == L':' && (name[2] == L'\\' || name[2] == L'/');
    if (!drive) {
        return name;
    }
    std::wstring path = L"\\\\?\\" + name;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
}

/// The system's words for its last error.
bool fail(std::wstring& why) {
    why = systemText(GetLastError());
    return false;
}

bool writeAll(HANDLE file, const std::string& content) {
    DWORD written = 0;
    return WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr) &&
           written == content.size() && FlushFileBuffers(file);
}

} // namespace

bool SystemDisk::exists(const std::wstring& name) {
    return GetFileAttributesW(longPath(name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool SystemDisk::read(const std::wstring& name, std::string& content, std::wstring& why) {
    const vcore::handle file(CreateFileW(longPath(name).c_str(), GENERIC_READ,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || !GetFileSizeEx(file.get(), &size)) {
        return fail(why);
    }
    if (static_cast<unsigned long long>(size.QuadPart) > mostBytes) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return fail(why);
    }
    content.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD done = 0;
    if (!ReadFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &done, nullptr)) {
        return fail(why);
    }
    content.resize(done);
    return true;
}

bool SystemDisk::replace(const std::wstring& name, const std::string& content, std::wstring& why) {
    const std::wstring fresh = longPath(name + L".new");
    bool written = false;
    {
        const vcore::handle file(CreateFileW(fresh.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
        written = file && writeAll(file.get(), content);
        if (!written) {
            fail(why);
        }
    }
    if (written && MoveFileExW(fresh.c_str(), longPath(name).c_str(),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return true;
    }
    if (written) {
        fail(why);
    }
    DeleteFileW(fresh.c_str());
    return false;
}

bool SystemDisk::remove(const std::wstring& name, std::wstring& why) {
    return DeleteFileW(longPath(name).c_str()) || fail(why);
}

bool SystemDisk::makeFolder(const std::wstring& name, std::wstring& why) {
    const DWORD attributes = GetFileAttributesW(longPath(name).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        SetLastError(ERROR_DIRECTORY);
        return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 || fail(why);
    }
    const std::wstring above = folderOf(name);
    if (!above.empty() && above.back() != L':' && !makeFolder(above, why)) {
        return false;
    }
    return CreateDirectoryW(longPath(name).c_str(), nullptr) || fail(why);
}

std::vector<std::wstring> SystemDisk::files(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(longPath(joined(folder, L"*")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            names.emplace_back(found.cFileName);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::uint64_t> SystemDisk::freeBytes(const std::wstring& folder) {
    ULARGE_INTEGER free{};
    std::wstring asked = folder;
    while (!asked.empty() && !exists(asked)) {
        asked = folderOf(asked);
    }
    return GetDiskFreeSpaceExW(asked.empty() ? nullptr : longPath(asked + L"\\").c_str(), &free, nullptr,
                               nullptr)
               ? std::optional<std::uint64_t>(free.QuadPart)
               : std::nullopt;
}

} // namespace app
