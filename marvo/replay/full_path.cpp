#include "marvo/replay/full_path.h"

#include "marvo/core/platform.h"

#include <string>

vcore::str fullPath(const wchar_t* name) {
    vcore::str path;
    if (const DWORD size = name ? GetFullPathNameW(name, 0, nullptr, nullptr) : 0; size != 0) {
        std::wstring buffer(size, L'\0');
        if (GetFullPathNameW(name, size, buffer.data(), nullptr) < size) {
            path = buffer.c_str();
        }
    }
    return path;
}
