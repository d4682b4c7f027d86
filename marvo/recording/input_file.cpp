#include "marvo/recording/input_file.h"

#include "marvo/core/disk_file.h"
#include "marvo/core/winthread.h"

#include <algorithm>

namespace recording {

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

} // namespace

bool InputFile::open(const wchar_t* name) {
    file_ = vcore::openDiskFile(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    return opened();
}

unsigned long long InputFile::size() const {
    LARGE_INTEGER size{};
    return file_ && GetFileSizeEx(file_.get(), &size) ? static_cast<unsigned long long>(size.QuadPart) : 0;
}

std::size_t InputFile::read(unsigned long long offset, void* to, std::size_t bytes) const {
    // A position in an OVERLAPPED would do, but each such read makes a second call of the system on some
    // systems.
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    const vwin::winthread::killable slowDisk;
    if (!SetFilePointerEx(file_.get(), position, nullptr, FILE_BEGIN)) {
        return 0;
    }
    std::size_t done = 0;
    while (done < bytes) {
        constexpr std::size_t mostAtOnce = 0x1000000;
        const auto wanted = static_cast<DWORD>(std::min(bytes - done, mostAtOnce));
        DWORD got = 0;
        if (!ReadFile(file_.get(), static_cast<unsigned char*>(to) + done, wanted, &got, nullptr) ||
            got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

bool InputFile::isBeingWritten(const wchar_t* name) {
    return !vcore::openDiskFile(name, GENERIC_READ, FILE_SHARE_READ) &&
           GetLastError() == ERROR_SHARING_VIOLATION;
}

bool InputFile::areSame(const wchar_t* one, const wchar_t* other) {
    const vcore::handle first = vcore::openDiskFile(one, 0, shareAll);
    const vcore::handle second = vcore::openDiskFile(other, 0, shareAll);
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return first && second && GetFileInformationByHandle(first.get(), &a) &&
           GetFileInformationByHandle(second.get(), &b) && a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

} // namespace recording
