#include "marvo/core/cstr.h"

#include "marvo/core/str.h"

#include <climits>
#include <cwchar>
#include <memory>
#include <string_view>

namespace vcore {

cstr::cstr(const wchar_t* s) {
    set(s, INT_MAX);
}

cstr::cstr(const str& s) : cstr(s.oleStr()) {}

cstr::cstr(const strtoken& token) {
    *this = token;
}

cstr::cstr(const cstr& source) : cstr(source.text_) {}

cstr::~cstr() {
    delete[] text_;
}

cstr& cstr::operator=(const wchar_t* s) {
    set(s, INT_MAX);
    return *this;
}

cstr& cstr::operator=(const str& s) {
    return *this = s.oleStr();
}

cstr& cstr::operator=(const strtoken& token) {
    set(token.start(), token.len() < INT_MAX ? static_cast<int>(token.len()) : INT_MAX);
    return *this;
}

cstr& cstr::operator=(const cstr& source) {
    return *this = source.text_;
}

void cstr::set(const wchar_t* s, int n) {
    std::unique_ptr<wchar_t[]> text;
    const std::size_t length = s && n > 0 ? wcsnlen(s, static_cast<std::size_t>(n)) : 0;
    if (length > 0) {
        text = std::make_unique<wchar_t[]>(length + 1);
        std::wmemcpy(text.get(), s, length);
    }
    delete[] text_;
    text_ = text.release();
}

unsigned long cstr::len() const {
    return static_cast<unsigned long>(std::wcslen(oleStr()));
}

unsigned long cstr::size() const {
    return text_ ? (len() + 1) * static_cast<unsigned long>(sizeof(wchar_t)) : 0;
}

int cstr::compare(const wchar_t* s) const {
    return str::compare(oleStr(), s);
}

int cstr::compareI(const wchar_t* s) const {
    return str::compareI(oleStr(), s);
}

void cstr::lower() {
    if (text_) {
        CharLowerBuffW(text_, len());
    }
}

int cstr::findStr(const wchar_t* s, unsigned long from) const {
    const std::size_t pos = s ? std::wstring_view(oleStr()).find(s, from) : std::wstring_view::npos;
    return pos == std::wstring_view::npos ? -1 : static_cast<int>(pos);
}

} // namespace vcore
