#include "core/strtokens.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace vcore {

namespace {

constexpr int firstCapacity = 32;

} // namespace

strtokens::strtokens() : _tokens(std::make_unique<strtoken[]>(firstCapacity)), _capacity(firstCapacity) {}

strtokens::strtokens(const str& text) : strtokens() {
    _split(text, L"", false, false);
}

strtokens::strtokens(const strtokens& source)
    : _tokens(std::make_unique<strtoken[]>(source._capacity)), _count(source._count),
      _capacity(source._capacity) {
    std::copy_n(source._tokens.get(), _count, _tokens.get());
}

strtokens& strtokens::operator=(const strtokens& source) {
    if (this == &source)
        return *this;
    clearAll();
    for (int i = 0; i < source._count; ++i)
        newToken() = source._tokens[i];
    return *this;
}

int strtokens::splitStr(const str& text) {
    return _split(text, L"", false, false);
}

int strtokens::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

strtoken& strtokens::newToken() {
    _checkIndex(_count);
    _tokens[_count] = strtoken();
    return _tokens[_count++];
}

strtoken strtokens::takeLast() {
    return _count > 0 ? _tokens[--_count] : strtoken();
}

void strtokens::clearAll() {
    std::fill_n(_tokens.get(), _count, strtoken());
    _count = 0;
}

strtoken strtokens::operator[](int index) const {
    return index >= 0 && index < _count ? _tokens[index] : strtoken();
}

void strtokens::_checkIndex(int index) {
    if (index < _capacity)
        return;
    while (index >= _capacity)
        _capacity = _capacity > INT_MAX / 4 ? INT_MAX : _capacity * 4;
    auto tokens = std::make_unique<strtoken[]>(static_cast<std::size_t>(_capacity));
    for (int i = 0; i < _count; ++i)
        tokens[i].set(_tokens[i].start(), _tokens[i].len());
    _tokens = std::move(tokens);
}

void strtokens::_addWord(const wchar_t* start, unsigned long length) {
    if (length > 0)
        newToken().set(start, length);
}

int strtokens::_split(const str& text, const wchar_t* separators, bool keepEmpty, bool keepLast) {
    clearAll();
    const wchar_t* const start = text.oleStr();
    const unsigned long length = text.len();
    unsigned long pos = 0;
    for (;;) {
        const int found = text.findChar(separators, pos);
        const bool last = found < 0;
        const unsigned long end = last ? length : static_cast<unsigned long>(found);
        if (end > pos || (last ? keepLast : keepEmpty))
            newToken().set(start + pos, end - pos);
        if (last)
            return _count;
        pos = end + 1;
    }
}

} // namespace vcore
