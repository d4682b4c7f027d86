#include "marvo/core/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace vcore {

namespace {

/// What `printf` writes. The standard library's `to_chars` would do all of this; its tables are a sixth of
/// the whole DLL.
std::string printed(const char* pattern, int precision, double value) {
    char buffer[512];
    const int length = std::snprintf(buffer, sizeof buffer, pattern, precision, value);
    std::string text(buffer, std::clamp(length, 0, static_cast<int>(sizeof buffer) - 1));
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

template <typename Number>
std::string shortest(Number value, int most) {
    for (int digits = 1;; ++digits) {
        std::string text = printed("%.*g", digits, static_cast<double>(value));
        double read = 0;
        std::from_chars(text.data(), text.data() + text.size(), read);
        if (digits == most || static_cast<Number>(read) == value) {
            return text;
        }
    }
}

} // namespace

std::string fixedText(double value, int decimals) {
    if (!std::isfinite(value)) {
        return std::string(std::signbit(value) ? "-" : "") + (std::isnan(value) ? "nan" : "inf");
    }
    return printed("%.*f", decimals, value);
}

std::string shortestText(double value) {
    return shortest(value, 17);
}

std::string shortestText(float value) {
    return shortest(value, 9);
}

} // namespace vcore
