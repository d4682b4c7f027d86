#include "marvo/recording/drive_search.h"

#include "marvo/core/handle.h"
#include "marvo/dv/dv_system.h"

namespace {
constexpr unsigned long long fiveMinutes = 7500ull * vdv::palFrameBytes;
}

bool dvDriveSearch::enough(unsigned long long bytes) {
    return bytes > fiveMinutes;
}

dvDriveSearch::~dvDriveSearch() = default;

unsigned long long dvDriveSearch::best(vcore::str& root, const wchar_t* file) const {
    unsigned long long most = 0;
    for (wchar_t letter = L'Z'; letter >= L'A'; --letter) {
        const wchar_t drive[] = {letter, L':', L'\\', L'\0'};
        if (!isFixed(drive)) {
            continue;
        }
        const unsigned long long room = freeBytes(drive) + fileLength((vcore::str(drive) + file).oleStr());
        if (room > most) {
            most = room;
            root = drive;
        }
    }
    return most;
}

bool dvDriveSearch::isFixed(const wchar_t* root) const {
    return (GetLogicalDrives() & (1ul << (root[0] - L'A'))) != 0 && GetDriveTypeW(root) == DRIVE_FIXED;
}

unsigned long long dvDriveSearch::freeBytes(const wchar_t* root) const {
    DWORD sectorsPerCluster = 0;
    DWORD bytesPerSector = 0;
    DWORD freeClusters = 0;
    DWORD clusters = 0;
    if (!GetDiskFreeSpaceW(root, &sectorsPerCluster, &bytesPerSector, &freeClusters, &clusters)) {
        return 0;
    }
    return static_cast<unsigned long long>(sectorsPerCluster) * bytesPerSector * freeClusters;
}

unsigned long long dvDriveSearch::fileLength(const wchar_t* name) const {
    const vcore::handle file(CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER length{};
    return file && GetFileSizeEx(file.get(), &length) ? static_cast<unsigned long long>(length.QuadPart) : 0;
}
