#include "host/options.h"

#include "host/text.h"

#include <cwchar>

namespace host {

namespace {

constexpr int largest_side = 8192;

bool readSize(const std::wstring& text, int& width, int& height) {
    int w = 0;
    int h = 0;
    wchar_t extra = 0;
    if (std::swscanf(text.c_str(), L"%dx%d%lc", &w, &h, &extra) != 2 || w < 1 || h < 1 || w > largest_side ||
        h > largest_side) {
        return false;
    }
    width = w;
    height = h;
    return true;
}

} // namespace

const char* Options::usage() {
    return "usage: marvo-host [--script FILE [--report FILE]] [--size WIDTHxHEIGHT]";
}

bool Options::read(const std::vector<std::wstring>& arguments, std::string& error) {
    for (size_t i = 0; i < arguments.size(); i += 2) {
        const std::wstring& name = arguments[i];
        if (name != L"--script" && name != L"--report" && name != L"--size") {
            error = "unknown argument " + utf8(name);
            return false;
        }
        if (i + 1 == arguments.size()) {
            error = utf8(name) + " needs a value";
            return false;
        }
        const std::wstring& value = arguments[i + 1];
        if (name == L"--script") {
            script = value;
        } else if (name == L"--report") {
            report = value;
        } else if (!readSize(value, width, height)) {
            error = "the size must be WIDTHxHEIGHT in pixels, as 720x576, not " + utf8(value);
            return false;
        }
    }
    if (!report.empty() && script.empty()) {
        error = "--report goes with --script";
        return false;
    }
    return true;
}

} // namespace host
