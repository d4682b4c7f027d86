#include "marvo/core/file.h"

#include "marvo/core/daytime.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

namespace vcore {

namespace {

constexpr wchar_t byteOrderMark = 0xFEFF;

/// Waits for a transfer that the system has not finished at once, as it may on a handle opened for that.
bool finishTransfer(HANDLE handle, BOOL finished, OVERLAPPED& place, unsigned long& done) {
    if (finished) {
        return true;
    }
    if (GetLastError() != ERROR_IO_PENDING) {
        return false;
    }
    DWORD bytes = 0;
    const bool good = GetOverlappedResult(handle, &place, &bytes, TRUE);
    done = bytes;
    return good;
}

/// Transfers up to `n` bytes at `offset` with ReadFile or WriteFile. An OVERLAPPED would give the place, too,
/// but some systems then report each transfer's end to another process, which takes longer than a frame's
/// transfer itself; so one is only used for a handle that was opened for it, which refuses to do without.
template <class Data>
bool transferAt(HANDLE handle, unsigned long long offset, Data* data, unsigned long n, unsigned long& done,
                BOOL(WINAPI* transfer)(HANDLE, Data*, DWORD, DWORD*, OVERLAPPED*)) {
    LARGE_INTEGER position;
    position.QuadPart = static_cast<LONGLONG>(offset);
    // Pipes and devices have no positions; a file that cannot go there must not transfer anywhere else.
    if (!SetFilePointerEx(handle, position, nullptr, FILE_BEGIN) && GetFileType(handle) == FILE_TYPE_DISK) {
        return false;
    }
    if (transfer(handle, data, n, &done, nullptr)) {
        return true;
    }
    if (GetLastError() != ERROR_INVALID_PARAMETER) {
        return false;
    }
    OVERLAPPED place{};
    place.Offset = position.LowPart;
    place.OffsetHigh = static_cast<DWORD>(position.HighPart);
    return finishTransfer(handle, transfer(handle, data, n, &done, &place), place, done);
}

/// Converts bytes of the ANSI code page.
std::wstring widenText(const std::string& bytes) {
    const int n = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), 0);
    text.resize(n ? MultiByteToWideChar(CP_ACP, 0, bytes.data(), n, text.data(), n) : 0);
    return text;
}

/// Converts to the ANSI code page, without a limit on the bytes per character.
std::string narrowText(const wchar_t* text, int n) {
    const int size = n ? WideCharToMultiByte(CP_ACP, 0, text, n, nullptr, 0, nullptr, nullptr) : 0;
    std::string bytes(size, 0);
    if (size) {
        WideCharToMultiByte(CP_ACP, 0, text, n, bytes.data(), size, nullptr, nullptr);
    }
    return bytes;
}

} // namespace

file::file(const wchar_t* name, unsigned long creation, bool wide, unsigned long access)
    : creation_(creation), access_(access), wide_(wide) {
    setName(name);
}

file::~file() {
    file::close();
}

bool file::open(const wchar_t* name) {
    if (name) {
        name_ = name;
    }
    return openAs(creation_);
}

bool file::reopen() {
    switch (creation_) {
    case CREATE_NEW:
    case CREATE_ALWAYS:
        return openAs(OPEN_ALWAYS);
    case TRUNCATE_EXISTING:
        return openAs(OPEN_EXISTING);
    default:
        return openAs(creation_);
    }
}

bool file::openAs(unsigned long creation) {
    close();
    if (name_.len() == 0) {
        return false;
    }
    const HANDLE handle = CreateFileW(name_.oleStr(), access_, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (!file::attach(handle)) {
        return false;
    }
    if (beginText()) {
        return true;
    }
    close();
    return false;
}

/// Recognises the byte-order mark of an existing text, or writes that of a new one.
bool file::beginText() {
    position_ = 0;
    wchar_t mark = 0;
    if (size() == 0) {
        unicode_ = wide_;
        return !wide_ || write(&byteOrderMark, sizeof byteOrderMark, nullptr);
    }
    unsigned long done = 0;
    unicode_ = readAt(0, &mark, sizeof mark, done) && done == sizeof mark && mark == byteOrderMark;
    position_ = unicode_ ? sizeof mark : 0;
    return true;
}

void file::close() {
    const HANDLE handle = file::detach();
    if (handle != INVALID_HANDLE_VALUE) {
        CloseHandle(handle);
    }
}

bool file::attach(void* handle) {
    file::close();
    if (!handle || handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    handle_ = handle;
    LARGE_INTEGER position{};
    if (SetFilePointerEx(handle, LARGE_INTEGER{}, &position, FILE_CURRENT)) {
        position_ = static_cast<unsigned long long>(position.QuadPart);
    }
    _updateFileSize();
    return true;
}

void* file::detach() {
    const HANDLE handle = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    unicode_ = false;
    position_ = 0;
    size_ = 0;
    return handle;
}

bool file::readAt(unsigned long long offset, void* data, unsigned long n, unsigned long& done) const {
    done = 0;
    return opened() && data && transferAt(handle_, offset, data, n, done, ReadFile);
}

bool file::read(void* data, unsigned long n, unsigned long* done) {
    unsigned long bytes = 0;
    const bool good = readAt(position_, data, n, bytes);
    _addPos(bytes);
    if (done) {
        *done = bytes;
    }
    return good && (bytes == n || (done && bytes > 0));
}

bool file::write(const void* data, unsigned long n, unsigned long* done) {
    unsigned long bytes = 0;
    const bool good = opened() && data && transferAt(handle_, position_, data, n, bytes, WriteFile);
    _addPos(bytes);
    if (done) {
        *done = bytes;
    }
    return good && bytes == n;
}

unsigned long long file::remain() const {
    const unsigned long long end = size();
    return end > position_ ? end - position_ : 0;
}

bool file::truncate() {
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(position_);
    const bool good =
        opened() && SetFilePointerEx(handle_, end, nullptr, FILE_BEGIN) && SetEndOfFile(handle_);
    _updateFileSize();
    return good;
}

bool file::copyTo(iostore& destination) {
    constexpr unsigned long blockSize = 65536;
    if (!opened() || &destination == this) {
        return false;
    }
    const auto block = std::make_unique<char[]>(blockSize);
    for (unsigned long long left = remain(); left > 0;) {
        const auto n = static_cast<unsigned long>(std::min<unsigned long long>(left, blockSize));
        if (!read(block.get(), n, nullptr) || !destination.write(block.get(), n, nullptr)) {
            return false;
        }
        left -= n;
    }
    return true;
}

bool file::seek(unsigned long long offset) {
    if (!opened()) {
        return false;
    }
    position_ = _normAddr(offset);
    return true;
}

void file::_addPos(unsigned long n) {
    position_ = _normAddr(position_ + n);
}

unsigned long long file::_normAddr(unsigned long long offset) const {
    return std::min<unsigned long long>(offset, LLONG_MAX);
}

bool file::flush() {
    return opened() && FlushFileBuffers(handle_);
}

bool file::exist() const {
    const DWORD attributes = GetFileAttributesW(name_.oleStr());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool file::wait(unsigned long) const {
    return opened();
}

bool file::getCreationTime(daytime& time) const {
    FILETIME created;
    if (!opened() || !GetFileTime(handle_, &created, nullptr, nullptr)) {
        return false;
    }
    time =
        daytime(static_cast<unsigned long long>(created.dwHighDateTime) << 32 | created.dwLowDateTime, true);
    return time.toLocal();
}

bool file::_updateFileSize() const {
    LARGE_INTEGER bytes{};
    const bool good = opened() && GetFileSizeEx(handle_, &bytes);
    size_ = good ? static_cast<unsigned long long>(bytes.QuadPart) : 0;
    return good;
}

unsigned long long file::size() const {
    _updateFileSize();
    return size_;
}

bool file::readLine(str& line, wchar_t delimiter) {
    constexpr unsigned long blockSize = 512;
    char block[blockSize];
    const unsigned long unit = unicode_ ? sizeof(wchar_t) : 1;
    const char* const mark = reinterpret_cast<const char*>(&delimiter);
    std::string bytes;
    bool any = false;
    for (bool found = false; !found;) {
        unsigned long n = 0;
        if (!readAt(position_, block, blockSize, n) || n == 0) {
            break;
        }
        any = true;
        unsigned long taken = 0;
        while (taken + unit <= n && !(found = std::memcmp(block + taken, mark, unit) == 0)) {
            taken += unit;
        }
        // Half a character at the end of a damaged text is dropped.
        bytes.append(block, taken);
        _addPos(found ? taken + unit : std::max(taken, std::min(n, unit)));
    }
    if (unicode_) {
        std::wstring text(bytes.size() / sizeof(wchar_t), 0);
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        line.setWStr(text.c_str());
    } else {
        line.setWStr(widenText(bytes).c_str());
    }
    return any;
}

bool file::writeLine(const str& text, wchar_t delimiter) {
    const int found = text.findChar(delimiter);
    const unsigned long n = found < 0 ? text.len() : static_cast<unsigned long>(found) + 1;
    if (n == 0) {
        return opened();
    }
    if (unicode_) {
        return write(text.oleStr(), n * static_cast<unsigned long>(sizeof(wchar_t)), nullptr);
    }
    const std::string bytes = narrowText(text.oleStr(), static_cast<int>(n));
    return write(bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr);
}

} // namespace vcore
