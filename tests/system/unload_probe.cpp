/// A host that loads the library at run time and gives it up in every order. The exit code is 42, or the
/// number of the first step that failed; a hang or a fault shows as another one.

#include <windows.h>

#include <cstring>
#include <exception>

namespace {

#if defined(_WIN64)
#define METHOD
#else
#define METHOD __thiscall
#endif

int step = 0;

/// Ends the probe with the number of the step when `held` is false.
void check(bool held) {
    ++step;
    if (!held) {
        ExitProcess(static_cast<UINT>(step));
    }
}

/// The front end of a library loaded at run time.
struct Library {
    HMODULE module = LoadLibraryW(L"marvo.dll");
    void* frontEnd = member<void*>("dvFE");

    template <class Pointer>
    Pointer member(const char* name) const {
        const FARPROC address = GetProcAddress(module, name);
        check(address != nullptr);
        Pointer pointer{};
        std::memcpy(&pointer, &address, sizeof(pointer));
        return pointer;
    }
    bool init(int input) const {
        member<void(METHOD*)(void*, int)>("_ZN10dvFrontEnd8setInputEi")(frontEnd, input);
        return member<bool(METHOD*)(void*, HWND, bool)>("_ZN10dvFrontEnd4initEP6HWND__b")(frontEnd, nullptr,
                                                                                          false);
    }
    void(METHOD* done)(void*) = member<void(METHOD*)(void*)>("_ZN10dvFrontEnd4doneEv");

    bool loaded() const { return GetModuleHandleW(L"marvo.dll") != nullptr; }
    /// Whether the library goes in time, as it may on a thread of its own.
    bool goes() const {
        for (int i = 0; i < 1000 && loaded(); ++i) {
            Sleep(10);
        }
        return !loaded();
    }
};

} // namespace

int main() {
    {
        const Library plain;
        check(plain.init(0));
        plain.done(plain.frontEnd);
        FreeLibrary(plain.module);
        check(!plain.loaded());
    }
    {
        const Library refused;
        check(!refused.init(7));
        FreeLibrary(refused.module);
        check(!refused.loaded());
    }
    for (int i = 0; i < 3; ++i) {
        const Library early;
        check(early.init(0));
        FreeLibrary(early.module);
        check(early.loaded());
        early.done(early.frontEnd);
        check(early.goes());
    }
    return 42;
}
