/// @file
/// Memory for unbuffered transfers.
#pragma once

#include "marvo/core/platform.h"

#include <memory>

/// Gives sector memory back.
struct MARVO_API SectorFree {
    /// Frees the memory; null is allowed.
    void operator()(unsigned char* memory) const;
};

/// Memory for whole sectors, aligned so that any volume's unbuffered transfers accept it.
using SectorBuffer = std::unique_ptr<unsigned char[], SectorFree>;

/// The strictest sector size in use; memory aligned to it suits every volume.
constexpr unsigned long sectorMemoryAlignment = 4096;

/// `size` bytes of sector memory, zeroed; null when there is no memory.
MARVO_API SectorBuffer allocSectors(unsigned long size);
