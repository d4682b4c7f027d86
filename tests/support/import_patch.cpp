#include "tests/support/import_patch.h"

namespace {

template <class T>
T* at(HMODULE module, size_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(module) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* importsOf(HMODULE module) {
    const auto dos = at<const IMAGE_DOS_HEADER>(module, 0);
    const auto headers = at<const IMAGE_NT_HEADERS>(module, static_cast<size_t>(dos->e_lfanew));
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return at<const IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress);
}

} // namespace

ImportPatch::ImportPatch(HMODULE module, const std::string& name, void* replacement) {
    for (auto library = importsOf(module); library->Name != 0; ++library) {
        auto names = at<const IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
        auto entry = at<void*>(module, library->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++entry) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                continue;
            }
            const auto imported =
                at<const IMAGE_IMPORT_BY_NAME>(module, static_cast<size_t>(names->u1.AddressOfData));
            if (name == reinterpret_cast<const char*>(imported->Name)) {
                original_ = *entry;
                entries_.push_back(entry);
            }
        }
    }
    for (void** entry : entries_) {
        overwrite(entry, replacement);
    }
}

ImportPatch::~ImportPatch() {
    for (void** entry : entries_) {
        overwrite(entry, original_);
    }
}

void overwrite(void** entry, void* function) {
    DWORD former = 0;
    VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &former);
    *entry = function;
    VirtualProtect(entry, sizeof(*entry), former, &former);
}

HMODULE engineModule() {
    return GetModuleHandleA("marvo.dll");
}
