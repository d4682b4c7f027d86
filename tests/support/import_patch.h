/// @file
/// Functions that a loaded module imports, replaced.
#pragma once

#include "marvo.h"

#include <string>
#include <vector>

/// Replaces a function that a loaded module imports, for this module only and as long as the object lives.
/// Calls that are under way go on.
class ImportPatch {
public:
    /// Replaces every import of that name, from whichever library, by `replacement`, which has the same
    /// signature.
    ImportPatch(HMODULE module, const std::string& name, void* replacement);
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    /// The imported function itself; null when the module does not import it.
    void* original() const { return original_; }

private:
    void* original_ = nullptr;
    std::vector<void**> entries_;
};

/// Puts a function into a table that is otherwise only read: a module's imports, a class's methods.
void overwrite(void** entry, void* function);

/// The module of the engine's library.
HMODULE engineModule();
