#include "marvo/core/strtokens.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace vcore {

namespace {

constexpr int firstCapacity = 32;

} // namespace

strtokens::strtokens() : tokens_(std::make_unique<strtoken[]>(firstCapacity)), capacity_(firstCapacity) {}

strtokens::strtokens(const str& text) : strtokens() {
    splitText(text, L"", false, false);
}

strtokens::strtokens(const strtokens& source)
    : tokens_(std::make_unique<strtoken[]>(source.capacity_)), count_(source.count_),
      capacity_(source.capacity_) {
    std::copy_n(source.tokens_.get(), count_, tokens_.get());
}

strtokens& strtokens::operator=(const strtokens& source) {
    if (this == &source) {
        return *this;
    }
    clearAll();
    for (int i = 0; i < source.count_; ++i) {
        newToken() = source.tokens_[i];
    }
    return *this;
}

int strtokens::splitStr(const str& text) {
    return splitText(text, L"", false, false);
}

int strtokens::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

strtoken& strtokens::newToken() {
    _checkIndex(count_);
    tokens_[count_] = strtoken();
    return tokens_[count_++];
}

strtoken strtokens::takeLast() {
    return count_ > 0 ? tokens_[--count_] : strtoken();
}

void strtokens::clearAll() {
    std::fill_n(tokens_.get(), count_, strtoken());
    count_ = 0;
}

strtoken strtokens::operator[](int index) const {
    return index >= 0 && index < count_ ? tokens_[index] : strtoken();
}

void strtokens::_checkIndex(int index) {
    if (index < capacity_) {
        return;
    }
    while (index >= capacity_) {
        capacity_ = capacity_ > INT_MAX / 4 ? INT_MAX : capacity_ * 4;
    }
    auto tokens = std::make_unique<strtoken[]>(static_cast<std::size_t>(capacity_));
    for (int i = 0; i < count_; ++i) {
        tokens[i].set(tokens_[i].start(), tokens_[i].len());
    }
    tokens_ = std::move(tokens);
}

void strtokens::addWord(const wchar_t* start, unsigned long length) {
    if (length > 0) {
        newToken().set(start, length);
    }
}

int strtokens::splitText(const str& text, const wchar_t* separators, bool keepEmpty, bool keepLast) {
    clearAll();
    const wchar_t* const start = text.oleStr();
    const unsigned long length = text.len();
    unsigned long pos = 0;
    for (;;) {
        const int found = text.findChar(separators, pos);
        const bool last = found < 0;
        const unsigned long end = last ? length : static_cast<unsigned long>(found);
        if (end > pos || (last ? keepLast : keepEmpty)) {
            newToken().set(start + pos, end - pos);
        }
        if (last) {
            return count_;
        }
        pos = end + 1;
    }
}

} // namespace vcore
