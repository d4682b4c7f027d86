#include "marvo/core/sector_memory.h"

#include <cstring>
#include <new>

namespace {

constexpr std::align_val_t alignment{sectorMemoryAlignment};

} // namespace

void SectorFree::operator()(unsigned char* memory) const {
    ::operator delete(memory, alignment);
}

SectorBuffer allocSectors(unsigned long size) {
    auto* memory = static_cast<unsigned char*>(::operator new(size, alignment, std::nothrow));
    if (memory) {
        std::memset(memory, 0, size);
    }
    return SectorBuffer(memory);
}
