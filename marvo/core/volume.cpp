#include "marvo/core/volume.h"

#include "marvo/core/platform.h"

#include <cwchar>

namespace {

constexpr unsigned long maxPath = 1024;

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
