#include "marvo/core/str.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>

namespace vcore {

namespace {

constexpr unsigned long firstCapacityLimit = 65536;
constexpr unsigned long standardCapacity = 64;

/// Positions are ints.
constexpr unsigned long long mostCharacters = 1ull << 31;

/// A length as the class holds it; one that it cannot hold becomes one for which there is no room.
unsigned long limited(std::size_t length) {
    return static_cast<unsigned long>(std::min<std::size_t>(length, ULONG_MAX));
}

/// Addresses this low are members of null objects, or small numbers taken for addresses.
bool isNoString(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address) < 1024;
}

void widen(wchar_t* out, const char* bytes, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = static_cast<unsigned char>(bytes[i]);
    }
}

/// Converts one character and returns the bytes written, none when they would not fit.
unsigned long narrowCharacter(char* out, unsigned long room, wchar_t c) {
    if (c < 0x80) {
        *out = static_cast<char>(c);
        return 1;
    }
    char bytes[8];
    int n = WideCharToMultiByte(CP_ACP, 0, &c, 1, bytes, sizeof bytes, nullptr, nullptr);
    if (n <= 0) {
        bytes[0] = '?';
        n = 1;
    }
    if (static_cast<unsigned long>(n) > room) {
        return 0;
    }
    std::memcpy(out, bytes, n);
    return n;
}

/// Converts as many of `n` characters as fit into `n` bytes and returns the number of bytes.
unsigned long narrowText(char* out, unsigned long n, const wchar_t* text) {
    unsigned long done = 0;
    while (done < n && text[done] < 0x80) {
        out[done] = static_cast<char>(text[done]);
        ++done;
    }
    const int left = static_cast<int>(std::min<unsigned long>(n - done, INT_MAX));
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text + done, left, out + done, left, nullptr, nullptr);
    if (bytes > 0) {
        return done + static_cast<unsigned long>(bytes);
    }
    for (unsigned long i = done; i < n; ++i) {
        const unsigned long size = narrowCharacter(out + done, n - done, text[i]);
        if (size == 0) {
            break;
        }
        done += size;
    }
    return done;
}

} // namespace

str::str(const str& source) {
    if (isNoString(&source)) {
        _init(standardCapacity, 0, narrowStale | growable | keepNarrow);
        return;
    }
    // Not limited like a capacity that is asked for: the source may have grown beyond the limit.
    allocate(source.capacity_, source.flags_ | narrowStale);
    std::wmemcpy(wide_, source.wide_, source.length_);
    wideChanged(source.length_);
}

str::str(const wchar_t* s, unsigned long size, int flags) {
    const unsigned long length = s ? static_cast<unsigned long>(wcsnlen(s, firstCapacityLimit)) : 0;
    _init(s ? size : 0, s ? length + 1 : 8, flags | narrowStale);
    setWStr(s, length);
}

str::str(const char* s, unsigned long size, int flags) {
    const unsigned long length = s ? static_cast<unsigned long>(strnlen(s, firstCapacityLimit)) : 0;
    _init(s ? size : 0, s ? length + 1 : 8, flags | keepNarrow);
    setStr(s, length);
}

str::str(unsigned long size, int flags) {
    _init(size ? size : standardCapacity, 0, flags | narrowStale);
}

str::str(const GUID& guid) {
    _init(256, 0, narrowStale);
    if (StringFromGUID2(guid, wide_, static_cast<int>(capacity_)) > 0) {
        updateWStr();
    }
}

str::str(const strtoken& token) {
    // A token may view a text that has grown beyond the limit for a first capacity.
    _init(std::min(token.len(), firstCapacityLimit - 2) + 1, 0, defaultFlags);
    *this = token;
}

str::~str() {
    delete[] wide_;
    delete[] narrow_;
}

void str::_init(unsigned long size, unsigned long minSize, int flags) {
    unsigned long capacity = std::max(size, minSize);
    if (capacity == 0) {
        capacity = 256;
    }
    if (capacity >= firstCapacityLimit) {
        trap();
    }
    allocate(capacity, flags);
}

void str::allocate(unsigned long capacity, int flags) {
    capacity_ = capacity;
    flags_ = flags;
    length_ = 0;
    wide_ = new wchar_t[capacity];
    wide_[0] = 0;
    if (flags & keepNarrow) {
        narrow_ = new char[capacity];
        narrow_[0] = 0;
    }
}

unsigned long str::memSize() const {
    return limited(std::size_t{capacity_} * (narrow_ ? 3 : 2));
}

unsigned long str::len() const {
    return isNullObject(this) ? 0 : length_;
}

unsigned long str::GetLength() const {
    return len();
}

unsigned long str::bufferSize() const {
    return isNullObject(this) ? 0 : capacity_;
}

wchar_t* str::oleStr() const {
    return isNullObject(this) ? nullptr : wide_;
}

unsigned long str::_checkLen(unsigned long needed, bool discard) {
    if (needed < ULONG_MAX && needed + 1 < capacity_) {
        return needed;
    }
    if (!(flags_ & growable)) {
        return capacity_ - 1;
    }
    unsigned long long capacity = capacity_ ? capacity_ : 4;
    while (capacity <= needed) {
        capacity *= 2;
    }
    if (capacity != capacity_ && !reallocate(capacity, discard)) {
        throw std::bad_alloc();
    }
    return needed;
}

unsigned long str::lengthWith(std::size_t more) const {
    return more < ULONG_MAX - length_ ? length_ + static_cast<unsigned long>(more) : ULONG_MAX;
}

bool str::reallocate(unsigned long long capacity, bool discard) {
    // More than the address space would throw rather than give null.
    if (capacity > mostCharacters || capacity > PTRDIFF_MAX / sizeof(wchar_t)) {
        return false;
    }
    const auto size = static_cast<unsigned long>(capacity);
    std::unique_ptr<wchar_t[]> wide(new (std::nothrow) wchar_t[size]);
    std::unique_ptr<char[]> narrow(narrow_ ? new (std::nothrow) char[size] : nullptr);
    if (!wide || (narrow_ && !narrow)) {
        return false;
    }
    if (!discard) {
        std::wmemcpy(wide.get(), wide_, std::min(size, capacity_));
    }
    delete[] wide_;
    delete[] narrow_;
    wide_ = wide.release();
    narrow_ = narrow.release();
    capacity_ = size;
    flags_ |= narrowStale;
    return true;
}

const char* str::getS() const {
    return getStr();
}

char* str::getStr() const {
    if (isNullObject(this)) {
        static char nothing[1];
        nothing[0] = 0;
        return nothing;
    }
    if (!narrow_) {
        narrow_ = new char[capacity_];
        flags_ |= narrowStale;
    }
    if (flags_ & narrowStale) {
        const unsigned long done = narrowText(narrow_, length_, wide_);
        std::memset(narrow_ + done, 0, length_ + 1 - done);
        flags_ &= ~narrowStale;
    }
    return narrow_;
}

void str::copyTo(wchar_t* out) const {
    if (out) {
        std::wmemcpy(out, isNullObject(this) ? L"" : wide_, len() + 1);
    }
}

void str::copyTo(char* out) const {
    if (out) {
        std::memcpy(out, getStr(), len() + 1);
    }
}

void str::toPascal(char* out) const {
    if (!out) {
        return;
    }
    const unsigned long count = std::min(len(), 255ul);
    out[0] = static_cast<char>(count);
    std::memcpy(out + 1, getStr(), count < 255 ? count + 1 : count);
}

str& str::operator=(const str& source) {
    if (isNoString(&source)) {
        Clear();
    } else {
        setWide(source.wide_, source.length_);
    }
    return *this;
}

str& str::operator=(const char* s) {
    return setStr(s);
}

str& str::operator=(const wchar_t* s) {
    return setWStr(s);
}

str& str::operator=(const strtoken& token) {
    return setWStr(token.start(), token.len());
}

str str::operator+(const wchar_t* s) const {
    str sum;
    sum.Append(*this);
    sum.append(s);
    return sum;
}

// The setters below move rather than copy: a source within the string itself is never longer than the text,
// so it causes no reallocation.

str& str::setStr(const char* s, unsigned long n) {
    if (!s || n == 0) {
        Clear();
        return *this;
    }
    return setBytes(s, strnlen(s, n));
}

str& str::setBytes(const char* s, std::size_t n) {
    const unsigned long length = _checkLen(limited(n), true);
    if (narrow_) {
        std::memmove(narrow_, s, length);
        narrow_[length] = 0;
        s = narrow_;
    }
    widen(wide_, s, length);
    wideChanged(length);
    if (narrow_) {
        flags_ &= ~narrowStale;
    }
    return *this;
}

str& str::setWStr(const wchar_t* s, unsigned long n) {
    if (!s || n == 0) {
        Clear();
        return *this;
    }
    return setWide(s, n == toEnd ? std::wcslen(s) : wcsnlen(s, n));
}

str& str::setWide(const wchar_t* s, std::size_t n) {
    const unsigned long length = _checkLen(limited(n), true);
    std::wmemmove(wide_, s, length);
    wideChanged(length);
    return *this;
}

str& str::setWStrNet(const wchar_t* s, unsigned long n) {
    setWStr(s, n);
    for (unsigned long i = 0; i < length_; ++i) {
        wide_[i] = static_cast<wchar_t>((wide_[i] << 8) | (wide_[i] >> 8));
    }
    return *this;
}

str& str::append(const wchar_t* s, unsigned long n) {
    if (!s || n == 0) {
        return *this;
    }
    return appendWide(s, n == toEnd ? std::wcslen(s) : wcsnlen(s, n));
}

str& str::appendWide(const wchar_t* s, std::size_t n) {
    if (n == 0) {
        return *this;
    }
    const bool own = owns(s);
    const std::ptrdiff_t offset = own ? s - wide_ : 0;
    const unsigned long length = _checkLen(lengthWith(n), false);
    std::wmemmove(wide_ + length_, own ? wide_ + offset : s, length - length_);
    wideChanged(length);
    return *this;
}

str& str::appendPascal(const char* counted) {
    if (!counted) {
        return *this;
    }
    wchar_t text[255];
    const unsigned long n = static_cast<unsigned char>(counted[0]);
    widen(text, counted + 1, n);
    return append(text, n);
}

str& str::insert(unsigned long pos, const wchar_t* s, unsigned long n) {
    if (!s || n == 0) {
        return *this;
    }
    n = static_cast<unsigned long>(wcsnlen(s, n));
    pos = std::min(pos, length_);
    std::unique_ptr<wchar_t[]> copy;
    if (owns(s)) {
        copy.reset(new wchar_t[n]);
        std::wmemcpy(copy.get(), s, n);
        s = copy.get();
    }
    const unsigned long length = _checkLen(lengthWith(n), false);
    const unsigned long inserted = std::min(n, length - pos);
    std::wmemmove(wide_ + pos + inserted, wide_ + pos, length - pos - inserted);
    std::wmemcpy(wide_ + pos, s, inserted);
    wideChanged(length);
    return *this;
}

str& str::remove(int pos, unsigned long n) {
    if (pos < 0) {
        const unsigned long overhang = 0ul - static_cast<unsigned long>(pos);
        n = n > overhang ? n - overhang : 0;
        pos = 0;
    }
    const unsigned long from = static_cast<unsigned long>(pos);
    if (from >= length_ || n == 0) {
        return *this;
    }
    if (n >= length_ - from) {
        wideChanged(from);
    } else {
        std::wmemmove(wide_ + from, wide_ + from + n, length_ - from - n);
        wideChanged(length_ - n);
    }
    return *this;
}

bool str::removeTo(const wchar_t* s) {
    const int pos = findStr(s);
    if (pos < 0) {
        return false;
    }
    remove(0, static_cast<unsigned long>(pos + std::wcslen(s)));
    return true;
}

str& str::fill(wchar_t c, unsigned long n) {
    const unsigned long length = _checkLen(n, true);
    std::wmemset(wide_, c, length);
    wideChanged(length);
    return *this;
}

void str::Clear() {
    wideChanged(0);
}

bool str::allocBuffer(unsigned long size, bool discard) {
    if (discard) {
        Clear();
    }
    if (size <= capacity_) {
        return true;
    }
    return (flags_ & growable) && reallocate(size, false);
}

void str::compact() {
    delete[] narrow_;
    narrow_ = nullptr;
    flags_ |= narrowStale;
    if (capacity_ > length_ + 1) {
        reallocate(length_ + 1, false);
    }
}

void str::updateStr(unsigned long n) {
    const unsigned long length = n || !narrow_ ? n : static_cast<unsigned long>(strnlen(narrow_, capacity_));
    if (length >= capacity_) {
        trap();
    }
    if (n) {
        if (!narrow_) {
            getStr();
        }
        narrow_[n] = 0;
    }
    if (narrow_) {
        widen(wide_, narrow_, length);
    }
    wideChanged(length);
    flags_ &= ~narrowStale;
}

void str::updateWStr(unsigned long n) {
    const unsigned long length = std::max(n, static_cast<unsigned long>(wcsnlen(wide_, capacity_)));
    if (length >= capacity_) {
        trap();
    }
    wideChanged(length);
}

str& str::lower() {
    CharLowerBuffW(wide_, length_);
    wideChanged(length_);
    return *this;
}

str& str::upper() {
    CharUpperBuffW(wide_, length_);
    wideChanged(length_);
    return *this;
}

} // namespace vcore
