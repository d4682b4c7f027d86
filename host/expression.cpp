#include "host/expression.h"

#include <charconv>

namespace host {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool continuesName(char c) {
    return isLetter(c) || isDigit(c) || c == '.' || c == '_';
}

/// Reads the number or name at `at` and moves `at` behind it.
std::optional<double> readTerm(const char*& at, const char* end, const Lookup& lookup, std::string& error) {
    const char* begin = at;
    if (at != end && isLetter(*at)) {
        while (at != end && continuesName(*at)) {
            ++at;
        }
        const std::string name(begin, at);
        if (name == "true" || name == "false") {
            return name == "true" ? 1.0 : 0.0;
        }
        std::optional<double> value = lookup(name);
        if (!value) {
            error = "there is no value called " + name;
        }
        return value;
    }
    double number = 0.0;
    const std::from_chars_result read = std::from_chars(begin, end, number, std::chars_format::fixed);
    if (read.ec != std::errc() || begin == end || *begin == '-') {
        error = "a number or a name is missing at \"" + std::string(begin, end) + "\"";
        return std::nullopt;
    }
    at = read.ptr;
    return number;
}

} // namespace

bool isName(const std::string& text) {
    if (text.empty() || !isLetter(text[0]) || text == "true" || text == "false") {
        return false;
    }
    for (char c : text) {
        if (!continuesName(c)) {
            return false;
        }
    }
    return true;
}

std::optional<double> evaluate(const std::string& expression, const Lookup& lookup, std::string& error) {
    const char* at = expression.data();
    const char* const end = at + expression.size();
    double sum = 0.0;
    bool first = true;
    do {
        double sign = 1.0;
        if (at != end && (*at == '+' || *at == '-')) {
            sign = *at++ == '-' ? -1.0 : 1.0;
        } else if (!first) {
            error = "+ or - is missing at \"" + std::string(at, end) + "\"";
            return std::nullopt;
        }
        const std::optional<double> term = readTerm(at, end, lookup, error);
        if (!term) {
            return std::nullopt;
        }
        sum += sign * *term;
        first = false;
    } while (at != end);
    return sum;
}

} // namespace host
