#include "marvo/core/volume.h"

#include <winternl.h>

#include <cwchar>

namespace {

constexpr unsigned long maxPath = 1024;

/// What the system tells of a volume's size, and the number of that question.
struct VolumeSize {
    LARGE_INTEGER units;
    LARGE_INTEGER freeForCaller;
    LARGE_INTEGER free;
    ULONG sectorsPerUnit;
    ULONG bytesPerSector;
};
constexpr int volumeSizeQuestion = 7;

using QueryVolume = NTSTATUS(NTAPI*)(HANDLE, IO_STATUS_BLOCK*, void*, ULONG, int);

/// The documented functions ask by a path: they take memory, and open a folder.
QueryVolume queryVolume() {
    static const auto entry = reinterpret_cast<QueryVolume>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryVolumeInformationFile")));
    return entry;
}

} // namespace

unsigned long bytesPerSector(const wchar_t* name) {
    wchar_t path[maxPath + 1] = L"";
    const unsigned long length = GetFullPathNameW(name, maxPath, path, nullptr);
    wchar_t* colon = length > 0 && length < maxPath ? std::wcschr(path, L':') : nullptr;
    const wchar_t* root = L"\\";
    if (colon) {
        colon[1] = L'\\';
        colon[2] = L'\0';
        root = path;
    }
    DWORD sectorsPerCluster = 0;
    DWORD sector = 0;
    DWORD freeClusters = 0;
    DWORD clusters = 0;
    return GetDiskFreeSpaceW(root, &sectorsPerCluster, &sector, &freeClusters, &clusters) ? sector : 0;
}

unsigned long long freeBytesBeside(HANDLE file) {
    VolumeSize size{};
    IO_STATUS_BLOCK status{};
    const QueryVolume query = queryVolume();
    if (!query || query(file, &status, &size, sizeof size, volumeSizeQuestion) < 0) {
        return ~0ull;
    }
    return static_cast<unsigned long long>(size.freeForCaller.QuadPart) * size.sectorsPerUnit *
           size.bytesPerSector;
}
