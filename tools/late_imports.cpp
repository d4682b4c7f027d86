// Functions of the system whose DLLs are loaded at the first call instead of with the program. Loading them
// takes several times as long as everything else that most commands do, and only pictures need them.
//
// Code calls such a function through a pointer, which the linker would have the system fill at the start
// ("__imp_" and the decorated name). Here these pointers are our own and lead to a function that fills them.
#include "marvo/core/platform.h"

#include <cwchar>

namespace {

FARPROC find(const wchar_t* library, const char* function) {
    // The whole path: a file of that name beside the recordings is not what is meant.
    wchar_t path[MAX_PATH];
    const UINT length = GetSystemDirectoryW(path, MAX_PATH);
    const bool fits = length != 0 && length + 1 + std::wcslen(library) < MAX_PATH;
    const HMODULE module = fits ? LoadLibraryW(std::wcscat(std::wcscat(path, L"\\"), library)) : nullptr;
    const FARPROC found = module ? GetProcAddress(module, function) : nullptr;
    if (!found) {
        vcore::trap();
    }
    return found;
}

template <class Pointer>
struct Late;

template <class Result, class... Arguments>
struct Late<Result(WINAPI*)(Arguments...)> {
    template <class Import>
    static Result WINAPI firstCall(Arguments... arguments) {
        using Pointer = Result(WINAPI*)(Arguments...);
        Import::slot() =
            reinterpret_cast<Pointer>(reinterpret_cast<void*>(find(Import::library, Import::function)));
        return Import::slot()(arguments...);
    }
};

} // namespace

#if defined(_WIN64)
#define SLOT_NAME(name, bytes) "__imp_" #name
#else
#define SLOT_NAME(name, bytes) "__imp__" #name "@" #bytes
#endif

/// `bytes` are those of the arguments, by which 32-bit Windows decorates the name.
#define LATE_IMPORT(dll, name, bytes)                                                                        \
    extern "C" {                                                                                             \
    extern decltype(&::name) slot_##name asm(SLOT_NAME(name, bytes));                                        \
    }                                                                                                        \
    struct Import_##name {                                                                                   \
        static constexpr auto library = L##dll;                                                              \
        static constexpr auto function = #name;                                                              \
        static auto& slot() {                                                                                \
            return slot_##name;                                                                              \
        }                                                                                                    \
    };                                                                                                       \
    decltype(&::name) slot_##name = Late<decltype(&::name)>::firstCall<Import_##name>;

LATE_IMPORT("ole32.dll", CLSIDFromString, 8)
LATE_IMPORT("ole32.dll", CoCreateInstance, 20)
LATE_IMPORT("ole32.dll", CoInitializeEx, 8)
LATE_IMPORT("ole32.dll", CoTaskMemAlloc, 4)
LATE_IMPORT("ole32.dll", CoTaskMemFree, 4)
LATE_IMPORT("ole32.dll", CreateItemMoniker, 12)
LATE_IMPORT("ole32.dll", GetRunningObjectTable, 8)
LATE_IMPORT("ole32.dll", StringFromGUID2, 12)
LATE_IMPORT("oleaut32.dll", VariantClear, 4)
LATE_IMPORT("oleaut32.dll", VariantInit, 4)
LATE_IMPORT("user32.dll", CharLowerBuffW, 8)
LATE_IMPORT("user32.dll", CharUpperBuffW, 8)
LATE_IMPORT("user32.dll", DispatchMessageW, 4)
LATE_IMPORT("user32.dll", MsgWaitForMultipleObjects, 20)
LATE_IMPORT("user32.dll", PeekMessageW, 20)
LATE_IMPORT("user32.dll", PostQuitMessage, 4)
LATE_IMPORT("user32.dll", TranslateMessage, 4)
