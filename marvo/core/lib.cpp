#include "marvo/core/lib.h"

#include "marvo/core/buf.h"
#include "marvo/core/str.h"

namespace vcore {

bool lib::open(const wchar_t* name, bool resourcesOnly) {
    close();
    if (!name || !*name) {
        return false;
    }
    resourcesOnly_ = resourcesOnly;
    module_ = LoadLibraryExW(name, nullptr, resourcesOnly ? LOAD_LIBRARY_AS_DATAFILE : 0);
    return opened();
}

void lib::close() {
    if (module_) {
        FreeLibrary(module_);
    }
    module_ = nullptr;
}

void* lib::symbol(const wchar_t* name) const {
    if (!module_ || resourcesOnly_) {
        return nullptr;
    }
    str narrow;
    narrow = name;
    return reinterpret_cast<void*>(GetProcAddress(module_, narrow.getStr()));
}

HMODULE lib::module(const wchar_t* name) {
    return GetModuleHandleW(name);
}

bool lib::loadResource(const wchar_t* name, long type, buf& out) const {
    if (!name || type <= 0 || type > 0xFFFF) {
        return false;
    }
    const HRSRC place = FindResourceW(module_, name, MAKEINTRESOURCEW(type));
    const HGLOBAL resource = place ? LoadResource(module_, place) : nullptr;
    const void* const bytes = resource ? LockResource(resource) : nullptr;
    return bytes && out.set(bytes, SizeofResource(module_, place));
}

} // namespace vcore
