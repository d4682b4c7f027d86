#include "marvo/avi/avi_output.h"

#include "marvo/core/winthread.h"
#include "marvo/avi/file_io_avi.h"
#include "marvo/core/volume.h"

#include <iterator>

namespace {

LARGE_INTEGER fileOffset(unsigned long long offset) {
    LARGE_INTEGER value;
    value.QuadPart = static_cast<LONGLONG>(offset);
    return value;
}

/// The folder of `name` with the backslash at its end; empty (the current folder) when the system does not
/// tell.
std::wstring folderOf(const wchar_t* name) {
    const DWORD size = GetFullPathNameW(name, 0, nullptr, nullptr);
    std::wstring path(size, L'\0');
    path.resize(GetFullPathNameW(name, size, path.data(), nullptr));
    const size_t end = path.find_last_of(L"\\/");
    return end == std::wstring::npos ? std::wstring() : path.substr(0, end + 1);
}

} // namespace

int AviOutput::create(const wchar_t* name, bool unbuffered) {
    // Not every system refuses to delete such a file.
    const DWORD attributes = GetFileAttributesW(name);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        return fail(FileIOAVI::SystemRefused, ERROR_ACCESS_DENIED);
    }
    DeleteFileW(name);
    const auto make = [&](DWORD disposition) {
        file_.reset(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, disposition,
                                FILE_ATTRIBUTE_NORMAL | (unbuffered ? FILE_FLAG_NO_BUFFERING : 0), nullptr));
    };
    // A file that began by being emptied is written out whole when it is closed, on some file systems; so one
    // is emptied only where it could not be deleted.
    make(CREATE_NEW);
    if (!file_ && GetLastError() == ERROR_FILE_EXISTS) {
        make(CREATE_ALWAYS);
    }
    if (!file_) {
        return fail(FileIOAVI::SystemRefused, GetLastError());
    }
    position_ = 0;
    name_ = name;
    folder_ = folderOf(name);
    return FileIOAVI::Ok;
}

unsigned long AviOutput::sectorSize(const wchar_t* name) const {
    return bytesPerSector(name);
}

int AviOutput::write(unsigned long long offset, const void* data, unsigned long bytes) {
    DWORD done = 0;
    DWORD error = ERROR_SUCCESS;
    // Most writes follow each other, and a system call costs more than this comparison.
    bool placed = offset == position_;
    position_ = unknownPosition;
    {
        const vwin::winthread::killable disk;
        placed = placed || SetFilePointerEx(file_.get(), fileOffset(offset), nullptr, FILE_BEGIN);
        if (placed && !WriteFile(file_.get(), data, bytes, &done, nullptr)) {
            error = GetLastError();
        }
    }
    if (!placed) {
        error_ = L"cannot get the file pointer.\n";
        return FileIOAVI::WriteFailed;
    }
    if (error != ERROR_SUCCESS) {
        return fail(error == ERROR_HANDLE_EOF ? FileIOAVI::ShortWrite : FileIOAVI::WriteFailed, error);
    }
    if (done != bytes) {
        return fail(FileIOAVI::ShortWrite, ERROR_DISK_FULL);
    }
    position_ = offset + bytes;
    return FileIOAVI::Ok;
}

bool AviOutput::hasRoom(unsigned long long bytes) {
    ULARGE_INTEGER available{};
    if (!GetDiskFreeSpaceExW(folder_.empty() ? nullptr : folder_.c_str(), &available, nullptr, nullptr) ||
        available.QuadPart >= bytes) {
        return true;
    }
    fail(FileIOAVI::WriteFailed, ERROR_DISK_FULL);
    return false;
}

void AviOutput::close(unsigned long long size) {
    LARGE_INTEGER present{};
    if (file_ && GetFileSizeEx(file_.get(), &present) &&
        static_cast<unsigned long long>(present.QuadPart) > size &&
        SetFilePointerEx(file_.get(), fileOffset(size), nullptr, FILE_BEGIN)) {
        SetEndOfFile(file_.get());
    }
    file_.reset();
}

void AviOutput::discard() {
    file_.reset();
    DeleteFileW(name_.c_str());
}

int AviOutput::fail(int code, unsigned long systemError) {
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, systemError, 0, text,
                   static_cast<DWORD>(std::size(text)), nullptr);
    error_ = text;
    return code;
}
