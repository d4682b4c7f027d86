#include "core/lib.h"

#include "core/buf.h"
#include "core/str.h"

namespace vcore {

bool lib::open(const wchar_t* name, bool resourcesOnly) {
    close();
    if (!name || !*name)
        return false;
    _resourcesOnly = resourcesOnly;
    _module = LoadLibraryExW(name, nullptr, resourcesOnly ? LOAD_LIBRARY_AS_DATAFILE : 0);
    return opened();
}

void lib::close() {
    if (_module)
        FreeLibrary(_module);
    _module = nullptr;
}

void* lib::symbol(const wchar_t* name) const {
    if (!_module || _resourcesOnly)
        return nullptr;
    str narrow;
    narrow = name;
    return reinterpret_cast<void*>(GetProcAddress(_module, narrow.getStr()));
}

HMODULE lib::module(const wchar_t* name) {
    return GetModuleHandleW(name);
}

bool lib::loadResource(const wchar_t* name, long type, buf& out) const {
    if (!name || type <= 0 || type > 0xFFFF)
        return false;
    const HRSRC place = FindResourceW(_module, name, MAKEINTRESOURCEW(type));
    const HGLOBAL resource = place ? LoadResource(_module, place) : nullptr;
    const void* const bytes = resource ? LockResource(resource) : nullptr;
    return bytes && out.set(bytes, SizeofResource(_module, place));
}

} // namespace vcore
