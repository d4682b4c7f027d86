#include "devices/camera_config.h"

#include "devices/file_handle.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace devices {

namespace {

const size_t largest_text = 1 << 20;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// A line up to its comment: a # at the beginning or after a blank, so that a path may hold one.
std::string_view without_comment(std::string_view line) {
    for (auto at = line.find('#'); at != std::string_view::npos; at = line.find('#', at + 1)) {
        if (at == 0 || line[at - 1] == ' ' || line[at - 1] == '\t') {
            return line.substr(0, at);
        }
    }
    return line;
}

template <class T>
bool read_number(std::string_view text, T& out, T least, T most) {
    text = trimmed(text);
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value >= least && value <= most)) {
        return false;
    }
    out = value;
    return true;
}

/// The two numbers around a separator.
bool split(std::string_view text, char separator, std::string_view& left, std::string_view& right) {
    const auto at = text.find(separator);
    if (at == std::string_view::npos) {
        return false;
    }
    left = text.substr(0, at);
    right = text.substr(at + 1);
    return true;
}

std::wstring widened(std::string_view text) {
    const int count = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring result(static_cast<size_t>(count), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(), count);
    return result;
}

std::wstring full_path(std::string_view text, const std::wstring& folder) {
    const std::wstring path = widened(text);
    const bool absolute = path.size() > 1 && (path[1] == L':' || path[0] == L'\\' || path[0] == L'/');
    return absolute || folder.empty() ? path : folder + L'\\' + path;
}

std::wstring folder_of(const std::wstring& path) {
    const auto slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

} // namespace

std::wstring camera_config::location() {
    WCHAR path[32768];
    const DWORD length = GetEnvironmentVariableW(L"MARVO_CAMERA", path, ARRAYSIZE(path));
    if (length > 0 && length < ARRAYSIZE(path)) {
        return path;
    }
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&camera_config::location), &module);
    if (GetModuleFileNameW(module, path, ARRAYSIZE(path)) == 0) {
        path[0] = 0;
    }
    return folder_of(path) + L"\\camera.txt";
}

camera_config camera_config::load(const std::wstring& path) {
    const file_handle file = file_handle::open_existing(path);
    const uint64_t size = file ? file.size() : 0;
    std::string text(static_cast<size_t>(size <= largest_text ? size : 0), '\0');
    if (!file || size > largest_text || !file.read_at(0, text.data(), text.size())) {
        std::fprintf(stderr, "camera: cannot read %ls; it has no stream then\n", path.c_str());
        return {};
    }
    return parse(text, folder_of(path), "camera");
}

camera_config camera_config::parse(std::string_view text, const std::wstring& folder, const char* name) {
    const std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (text.substr(0, 3) == byte_order_mark) {
        text.remove_prefix(3);
    }
    camera_config config;
    for (int number = 1; !text.empty(); ++number) {
        const auto end = text.find('\n');
        const std::string_view whole = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);

        const std::string_view line = trimmed(without_comment(whole));
        std::string_view key, value;
        if (line.empty() ||
            (split(line, '=', key, value) && config.set(trimmed(key), trimmed(value), folder))) {
            continue;
        }
        std::fprintf(stderr, "%s: line %d is not understood and left out: %.*s\n", name, number,
                     static_cast<int>(line.size()), line.data());
    }
    return config;
}

bool camera_config::set(std::string_view key, std::string_view value, const std::wstring& folder) {
    const uint64_t last_frame = uint64_t{1} << 48;
    const uint32_t longest_ms = 24 * 3600 * 1000;
    std::string_view left, right;
    if (value.empty()) {
        return false;
    }
    if (key == "stream" || key == "log") {
        (key == "stream" ? stream : log) = full_path(value, folder);
        return true;
    }
    if (key == "speed") {
        return read_number(value, speed, 0.001, 1000.0);
    }
    if (key == "burst") {
        return read_number<uint32_t>(value, burst, 1, 1000);
    }
    if (key == "devices") {
        return read_number<uint32_t>(value, devices, 1, 16);
    }
    if (key == "stall") {
        stall entry{};
        if (!split(value, ':', left, right) || !read_number<uint64_t>(left, entry.frame, 0, last_frame) ||
            !read_number<uint32_t>(right, entry.ms, 0, longest_ms)) {
            return false;
        }
        stalls.push_back(entry);
        return true;
    }
    if (key == "drop") {
        range entry{};
        if (!split(value, '-', left, right) || !read_number<uint64_t>(left, entry.from, 0, last_frame) ||
            !read_number<uint64_t>(right, entry.to, entry.from, last_frame)) {
            return false;
        }
        drops.push_back(entry);
        return true;
    }
    if (key == "lose") {
        loss entry{};
        uint32_t ms = 0;
        const bool returns = split(value, ':', value, left);
        if (returns && split(left, ':', left, right)) {
            entry.stream = full_path(right, folder);
        }
        if (!read_number<uint64_t>(value, entry.frame, 0, last_frame) ||
            (returns && !read_number<uint32_t>(left, ms, 0, longest_ms))) {
            return false;
        }
        entry.return_ms = returns ? std::optional(ms) : std::nullopt;
        losses.push_back(entry);
        return true;
    }
    if (key == "open") {
        return read_number<uint32_t>(value, open_ms, 0, longest_ms);
    }
    if (key == "scenario") {
        scenario = value;
        return true;
    }
    return false;
}

bool camera_config::drops_frame(uint64_t frame) const {
    for (const range& entry : drops) {
        if (frame >= entry.from && frame <= entry.to) {
            return true;
        }
    }
    return false;
}

const std::wstring& camera_config::stream_after(size_t lost) const {
    const std::wstring* now = &stream;
    for (size_t index = 0; index < std::min(lost, losses.size()); ++index) {
        now = losses[index].stream.empty() ? now : &losses[index].stream;
    }
    return *now;
}

uint64_t camera_config::stall_before(uint64_t frame) const {
    uint64_t ms = 0;
    for (const stall& entry : stalls) {
        ms += entry.frame == frame ? entry.ms : 0;
    }
    return ms;
}

} // namespace devices
