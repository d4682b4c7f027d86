#include "host/text.h"

#include "marvo.h"

#include <charconv>

namespace host {

std::wstring wide(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring result(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), static_cast<int>(result.size()));
    return result;
}

std::string utf8(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::string result(WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr),
                       '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), static_cast<int>(result.size()),
                        nullptr, nullptr);
    return result;
}

std::string numberText(double value) {
    char buffer[64];
    const bool whole =
        value > -1e15 && value < 1e15 && value == static_cast<double>(static_cast<long long>(value));
    const std::to_chars_result end =
        whole ? std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(value))
              : std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, end.ptr);
}

bool writeFile(const std::wstring& name, const std::string& content) {
    vcore::handle file(
        CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file &&
           WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr) &&
           written == content.size();
}

bool readFile(const std::wstring& name, std::string& content) {
    vcore::handle file(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    content.clear();
    char block[4096];
    DWORD done = 0;
    while (ReadFile(file.get(), block, sizeof block, &done, nullptr)) {
        if (done == 0) {
            return true;
        }
        content.append(block, done);
    }
    return false;
}

} // namespace host
