#include "marvo/avi/avi_output.h"

#include "marvo/avi/file_io_avi.h"
#include "marvo/core/disk_file.h"
#include "marvo/core/volume.h"
#include "marvo/core/winthread.h"

#include <iterator>

namespace {

LARGE_INTEGER fileOffset(unsigned long long offset) {
    LARGE_INTEGER value;
    value.QuadPart = static_cast<LONGLONG>(offset);
    return value;
}

/// A name beside `name` that no file has.
std::wstring freeNameBeside(const wchar_t* name) {
    const std::wstring start = std::wstring(name) + L".replaced";
    std::wstring candidate = start;
    for (int number = 2; GetFileAttributesW(candidate.c_str()) != INVALID_FILE_ATTRIBUTES; ++number) {
        candidate = start + std::to_wstring(number);
    }
    return candidate;
}

} // namespace

int AviOutput::create(const wchar_t* name, bool unbuffered) {
    if (const unsigned long error = vcore::whyNotReplaced(name)) {
        return fail(FileIOAVI::SystemRefused, error);
    }
    // A file that somebody holds open is deleted when he closes it, under the name that it has by then: a new
    // file of that name would go with it.
    const std::wstring former = freeNameBeside(name);
    const bool moved = MoveFileW(name, former.c_str()) != FALSE;
    const auto make = [&](vcore::DiskFile how) {
        file_ = vcore::openDiskFile(name, GENERIC_WRITE, FILE_SHARE_READ, how,
                                    unbuffered ? FILE_FLAG_NO_BUFFERING : 0);
    };
    // A file that began by being emptied is written out whole when it is closed, on some file systems; so one
    // is emptied only where it could not be moved.
    make(vcore::DiskFile::fresh);
    if (!file_ && GetLastError() == ERROR_FILE_EXISTS) {
        make(vcore::DiskFile::emptied);
    }
    if (!file_) {
        const DWORD error = GetLastError();
        if (moved) {
            MoveFileW(former.c_str(), name);
        }
        return fail(FileIOAVI::SystemRefused, error);
    }
    if (moved) {
        DeleteFileW(former.c_str());
    }
    position_ = 0;
    name_ = name;
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
        if (!placed || !WriteFile(file_.get(), data, bytes, &done, nullptr)) {
            error = GetLastError();
        }
    }
    if (!placed) {
        systemError_ = error;
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

unsigned long long AviOutput::freeBytes() const {
    const vwin::winthread::killable disk;
    return freeBytesBeside(file_.get());
}

bool AviOutput::hasRoom(unsigned long long bytes) {
    if (freeBytes() >= bytes) {
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
    systemError_ = systemError;
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, systemError, 0, text,
                   static_cast<DWORD>(std::size(text)), nullptr);
    error_ = text;
    return code;
}
