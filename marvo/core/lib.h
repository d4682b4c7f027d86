/// @file
/// Loaded modules.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

class buf;

/// A module (a DLL or a program) that this object has loaded and frees at its end: its functions and its
/// resources. Not thread-safe: guarded by its owner.
class MARVO_API lib {
public:
    /// No module.
    lib() = default;
    /// Closes the module.
    ~lib() { close(); }
    lib(const lib&) = delete;
    lib& operator=(const lib&) = delete;

    /// Closes the module held before and loads the one of that name. A bare name is searched for as the
    /// system does, also in the current directory; so give the whole path (for a module of the system's,
    /// behind its directory), unless everyone who can write there may run code here. With `resourcesOnly`
    /// none of its code runs and it has no symbols; it may be made for another processor then. False when
    /// there is no such module or no name.
    bool open(const wchar_t* name, bool resourcesOnly = false);
    /// Frees the module; pointers to its functions dangle from now on. Nothing happens when there is none.
    void close();
    /// Whether there is a module.
    bool opened() const { return module_ != nullptr; }

    /// The address of an exported function or variable; null when there is none of that (case-sensitive)
    /// name.
    void* symbol(const wchar_t* name) const;
    /// Stores the address of an exported function in a pointer of its type; false, and null stored, when
    /// there is none.
    template <class Function>
    bool storeSymbol(const wchar_t* name, Function*& function) const {
        function = reinterpret_cast<Function*>(symbol(name));
        return function != nullptr;
    }

    /// A module that is loaded already, of which no reference is taken; null when it is not. A null `name`
    /// means the running program.
    static HMODULE module(const wchar_t* name);
    /// Copies a resource of the module (of the running program, when there is none) to `out`. `name` may be a
    /// number made with `MAKEINTRESOURCEW`; `type` is the number of the resource's type, 10 for raw data.
    /// False, and `out` unchanged, when there is no such resource.
    bool loadResource(const wchar_t* name, long type, buf& out) const;

private:
    HMODULE module_ = nullptr;
    bool resourcesOnly_ = false;
};

} // namespace vcore
