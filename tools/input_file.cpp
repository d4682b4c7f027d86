#include "tools/input_file.h"

#include "tools/failure.h"
#include "tools/text.h"

#include <algorithm>

namespace dvrec {

namespace {

vcore::handle openFile(const std::wstring& name, DWORD access, DWORD share) {
    return vcore::handle(
        CreateFileW(name.c_str(), access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace

InputFile::InputFile(const std::wstring& name)
    : name_(name), file_(openFile(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE)) {
    if (file_) {
        return;
    }
    const DWORD error = GetLastError();
    const bool folder = (GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                        GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
    throw Failure{ExitStatus::cannotRead,
                  quoted(name) + " cannot be opened: " +
                      (folder ? std::string("it is a folder; name the recording in it.")
                              : systemMessage(error) + ". Is the name right, and may you read the file?")};
}

unsigned long long InputFile::size() const {
    LARGE_INTEGER size{};
    return GetFileSizeEx(file_.get(), &size) ? static_cast<unsigned long long>(size.QuadPart) : 0;
}

size_t InputFile::read(unsigned long long offset, std::span<unsigned char> to) const {
    // A position in an OVERLAPPED would do, but each such read makes a second call of the system on some
    // systems.
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(file_.get(), position, nullptr, FILE_BEGIN)) {
        return 0;
    }
    size_t done = 0;
    while (done < to.size()) {
        constexpr size_t mostAtOnce = 0x1000000;
        const auto wanted = static_cast<DWORD>(std::min(to.size() - done, mostAtOnce));
        DWORD got = 0;
        if (!ReadFile(file_.get(), to.data() + done, wanted, &got, nullptr) || got == 0) {
            break;
        }
        done += got;
    }
    return done;
}

bool InputFile::isBeingWritten() const {
    return !openFile(name_, GENERIC_READ, FILE_SHARE_READ) && GetLastError() == ERROR_SHARING_VIOLATION;
}

bool InputFile::isSameFile(const std::wstring& other) const {
    const vcore::handle file = openFile(other, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    BY_HANDLE_FILE_INFORMATION mine{};
    BY_HANDLE_FILE_INFORMATION its{};
    return file && GetFileInformationByHandle(file_.get(), &mine) &&
           GetFileInformationByHandle(file.get(), &its) &&
           mine.dwVolumeSerialNumber == its.dwVolumeSerialNumber &&
           mine.nFileIndexHigh == its.nFileIndexHigh && mine.nFileIndexLow == its.nFileIndexLow;
}

} // namespace dvrec
