/// @file
/// Counts what the engine allocates while frames flow.
#pragma once

#include "tests/support/import_patch.h"

#include <memory>
#include <string>
#include <vector>

/// Counts the memory that the engine's library asks for, whichever thread does: it replaces every allocating
/// function that the library imports. What the system's own libraries allocate on the way is not counted. One
/// at a time.
class AllocationCounter {
public:
    AllocationCounter();

    /// Begins again at 0.
    void reset();
    unsigned long long count() const;
    /// As "malloc 3, VirtualAlloc 1"; empty when nothing was allocated.
    std::string text() const;
    /// How many of the known functions the library imports.
    size_t functions() const;

private:
    std::vector<std::unique_ptr<ImportPatch>> patches_;
};
