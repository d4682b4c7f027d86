#include "core/str.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>

namespace vcore {

namespace {

constexpr unsigned long firstCapacityLimit = 65536;
constexpr unsigned long standardCapacity = 64;

/// Addresses this low are members of null objects, or small numbers taken for addresses.
bool isNoString(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address) < 1024;
}

void widen(wchar_t* out, const char* bytes, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        out[i] = static_cast<unsigned char>(bytes[i]);
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
    if (static_cast<unsigned long>(n) > room)
        return 0;
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
    if (bytes > 0)
        return done + static_cast<unsigned long>(bytes);
    for (unsigned long i = done; i < n; ++i) {
        const unsigned long size = narrowCharacter(out + done, n - done, text[i]);
        if (size == 0)
            break;
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
    _allocate(source._capacity, source._flags | narrowStale);
    std::wmemcpy(_wide, source._wide, source._length);
    _wideChanged(source._length);
}

str::str(const wchar_t* s, unsigned long size, int flags) {
    const unsigned long length = s ? static_cast<unsigned long>(std::wcslen(s)) : 0;
    _init(s ? size : 0, s ? length + 1 : 8, flags | narrowStale);
    setWStr(s, length);
}

str::str(const char* s, unsigned long size, int flags) {
    const unsigned long length = s ? static_cast<unsigned long>(std::strlen(s)) : 0;
    _init(s ? size : 0, s ? length + 1 : 8, flags | keepNarrow);
    setStr(s, length);
}

str::str(unsigned long size, int flags) {
    _init(size ? size : standardCapacity, 0, flags | narrowStale);
}

str::str(const GUID& guid) {
    _init(256, 0, narrowStale);
    if (StringFromGUID2(guid, _wide, static_cast<int>(_capacity)) > 0)
        updateWStr();
}

str::str(const strtoken& token) {
    // A token may view a text that has grown beyond the limit for a first capacity.
    _init(std::min(token.len() + 1, firstCapacityLimit - 1), 0, defaultFlags);
    *this = token;
}

str::~str() {
    delete[] _wide;
    delete[] _narrow;
}

void str::_init(unsigned long size, unsigned long minSize, int flags) {
    unsigned long capacity = std::max(size, minSize);
    if (capacity == 0)
        capacity = 256;
    if (capacity >= firstCapacityLimit)
        trap();
    _allocate(capacity, flags);
}

void str::_allocate(unsigned long capacity, int flags) {
    _capacity = capacity;
    _flags = flags;
    _length = 0;
    _wide = new wchar_t[capacity];
    _wide[0] = 0;
    if (flags & keepNarrow) {
        _narrow = new char[capacity];
        _narrow[0] = 0;
    }
}

unsigned long str::memSize() const {
    return _capacity * (_narrow ? 3 : 2);
}

unsigned long str::_checkLen(unsigned long needed, bool discard) {
    if (needed < ULONG_MAX && needed + 1 < _capacity)
        return needed;
    if (!(_flags & growable))
        return _capacity - 1;
    unsigned long long capacity = _capacity ? _capacity : 4;
    while (capacity <= needed)
        capacity *= 2;
    if (capacity > ULONG_MAX)
        trap();
    if (capacity != _capacity)
        _reallocate(static_cast<unsigned long>(capacity), discard);
    return needed;
}

void str::_reallocate(unsigned long capacity, bool discard) {
    auto wide = std::make_unique_for_overwrite<wchar_t[]>(capacity);
    std::unique_ptr<char[]> narrow;
    if (_narrow)
        narrow = std::make_unique_for_overwrite<char[]>(capacity);
    if (!discard)
        std::wmemcpy(wide.get(), _wide, std::min(capacity, _capacity));
    delete[] _wide;
    delete[] _narrow;
    _wide = wide.release();
    _narrow = narrow.release();
    _capacity = capacity;
    _flags |= narrowStale;
}

char* str::getStr() const {
    if (isNullObject(this)) {
        static char nothing[1];
        nothing[0] = 0;
        return nothing;
    }
    if (!_narrow) {
        _narrow = new char[_capacity];
        _flags |= narrowStale;
    }
    if (_flags & narrowStale) {
        const unsigned long done = narrowText(_narrow, _length, _wide);
        std::memset(_narrow + done, 0, _length + 1 - done);
        _flags &= ~narrowStale;
    }
    return _narrow;
}

void str::copyTo(wchar_t* out) const {
    if (out)
        std::wmemcpy(out, isNullObject(this) ? L"" : _wide, len() + 1);
}

void str::copyTo(char* out) const {
    if (out)
        std::memcpy(out, getStr(), len() + 1);
}

void str::toPascal(char* out) const {
    if (!out)
        return;
    const unsigned long count = std::min(len(), 255ul);
    out[0] = static_cast<char>(count);
    std::memcpy(out + 1, getStr(), count < 255 ? count + 1 : count);
}

str& str::operator=(const str& source) {
    if (isNoString(&source))
        Clear();
    else
        _setWide(source._wide, source._length);
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

// The setters below move rather than copy: a source within the string itself is never longer than the text, so it
// causes no reallocation.

str& str::setStr(const char* s, unsigned long n) {
    if (!s || n == 0) {
        Clear();
        return *this;
    }
    return _setBytes(s, static_cast<unsigned long>(strnlen(s, n)));
}

str& str::_setBytes(const char* s, unsigned long n) {
    const unsigned long length = _checkLen(n, true);
    if (_narrow) {
        std::memmove(_narrow, s, length);
        _narrow[length] = 0;
        s = _narrow;
    }
    widen(_wide, s, length);
    _wideChanged(length);
    if (_narrow)
        _flags &= ~narrowStale;
    return *this;
}

str& str::setWStr(const wchar_t* s, unsigned long n) {
    if (!s || n == 0) {
        Clear();
        return *this;
    }
    return _setWide(s, static_cast<unsigned long>(wcsnlen(s, n)));
}

str& str::_setWide(const wchar_t* s, unsigned long n) {
    const unsigned long length = _checkLen(n, true);
    std::wmemmove(_wide, s, length);
    _wideChanged(length);
    return *this;
}

str& str::setWStrNet(const wchar_t* s, unsigned long n) {
    setWStr(s, n);
    for (unsigned long i = 0; i < _length; ++i)
        _wide[i] = static_cast<wchar_t>((_wide[i] << 8) | (_wide[i] >> 8));
    return *this;
}

str& str::append(const wchar_t* s, unsigned long n) {
    if (!s || n == 0)
        return *this;
    return _appendWide(s, static_cast<unsigned long>(n == toEnd ? std::wcslen(s) : wcsnlen(s, n)));
}

str& str::_appendWide(const wchar_t* s, unsigned long n) {
    if (n == 0)
        return *this;
    const bool own = _owns(s);
    const std::ptrdiff_t offset = own ? s - _wide : 0;
    const unsigned long length = _checkLen(_length + n, false);
    std::wmemmove(_wide + _length, own ? _wide + offset : s, length - _length);
    _wideChanged(length);
    return *this;
}

str& str::appendPascal(const char* counted) {
    if (!counted)
        return *this;
    wchar_t text[255];
    const unsigned long n = static_cast<unsigned char>(counted[0]);
    widen(text, counted + 1, n);
    return append(text, n);
}

str& str::insert(unsigned long pos, const wchar_t* s, unsigned long n) {
    if (!s || n == 0)
        return *this;
    n = static_cast<unsigned long>(wcsnlen(s, n));
    pos = std::min(pos, _length);
    std::unique_ptr<wchar_t[]> copy;
    if (_owns(s)) {
        copy.reset(new wchar_t[n]);
        std::wmemcpy(copy.get(), s, n);
        s = copy.get();
    }
    const unsigned long length = _checkLen(_length + n, false);
    const unsigned long inserted = std::min(n, length - pos);
    std::wmemmove(_wide + pos + inserted, _wide + pos, length - pos - inserted);
    std::wmemcpy(_wide + pos, s, inserted);
    _wideChanged(length);
    return *this;
}

str& str::remove(int pos, unsigned long n) {
    if (pos < 0) {
        const unsigned long overhang = 0ul - static_cast<unsigned long>(pos);
        n = n > overhang ? n - overhang : 0;
        pos = 0;
    }
    const unsigned long from = static_cast<unsigned long>(pos);
    if (from >= _length || n == 0)
        return *this;
    if (n >= _length - from) {
        _wideChanged(from);
    } else {
        std::wmemmove(_wide + from, _wide + from + n, _length - from - n);
        _wideChanged(_length - n);
    }
    return *this;
}

bool str::removeTo(const wchar_t* s) {
    const int pos = findStr(s);
    if (pos < 0)
        return false;
    remove(0, static_cast<unsigned long>(pos + std::wcslen(s)));
    return true;
}

str& str::fill(wchar_t c, unsigned long n) {
    const unsigned long length = _checkLen(n, true);
    std::wmemset(_wide, c, length);
    _wideChanged(length);
    return *this;
}

void str::Clear() {
    _wideChanged(0);
}

bool str::allocBuffer(unsigned long size, bool discard) {
    if (discard)
        Clear();
    if (size <= _capacity)
        return true;
    if (!(_flags & growable))
        return false;
    _reallocate(size, false);
    return true;
}

void str::compact() {
    delete[] _narrow;
    _narrow = nullptr;
    _flags |= narrowStale;
    if (_capacity > _length + 1)
        _reallocate(_length + 1, false);
}

void str::updateStr(unsigned long n) {
    const unsigned long length = n || !_narrow ? n : static_cast<unsigned long>(strnlen(_narrow, _capacity));
    if (length >= _capacity)
        trap();
    if (n) {
        if (!_narrow)
            getStr();
        _narrow[n] = 0;
    }
    if (_narrow)
        widen(_wide, _narrow, length);
    _wideChanged(length);
    _flags &= ~narrowStale;
}

void str::updateWStr(unsigned long n) {
    const unsigned long length = std::max(n, static_cast<unsigned long>(wcsnlen(_wide, _capacity)));
    if (length >= _capacity)
        trap();
    _wideChanged(length);
}

str& str::lower() {
    CharLowerBuffW(_wide, _length);
    _wideChanged(_length);
    return *this;
}

str& str::upper() {
    CharUpperBuffW(_wide, _length);
    _wideChanged(_length);
    return *this;
}

} // namespace vcore
