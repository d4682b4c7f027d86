#include "tools/text.h"

#include "marvo/core/platform.h"

#include <cwctype>

namespace dvrec {

std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::string quoted(std::wstring_view text) {
    std::string result(1, '\'');
    result += utf8(text);
    result += '\'';
    return result;
}

std::string durationText(double seconds) {
    const auto hundredths = static_cast<unsigned long long>(seconds * 100 + 0.5);
    return format("%u:%02u:%02u.%02u", static_cast<unsigned>(hundredths / 360000),
                  static_cast<unsigned>(hundredths / 6000 % 60), static_cast<unsigned>(hundredths / 100 % 60),
                  static_cast<unsigned>(hundredths % 100));
}

bool hasExtension(const std::wstring& name, std::wstring_view extension) {
    if (name.size() < extension.size()) {
        return false;
    }
    const std::wstring_view end = std::wstring_view(name).substr(name.size() - extension.size());
    for (size_t i = 0; i < extension.size(); ++i) {
        if (static_cast<wchar_t>(std::towlower(end[i])) != extension[i]) {
            return false;
        }
    }
    return true;
}

} // namespace dvrec
