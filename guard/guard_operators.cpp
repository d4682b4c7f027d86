/// @file
/// Gives a module the guarded heap. The other forms of the operators, for arrays and without exceptions, are
/// the run-time library's, which lead to these.

#include "guard/guard_heap.h"

#include <algorithm>
#include <new>

namespace {

void* allocated(std::size_t size, std::size_t alignment) {
    if (void* const block = guard::allocate(size, alignment)) {
        return block;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) {
    // A size is a multiple of what its type has to be aligned to; so the block can end exactly where its page
    // ends.
    const std::size_t divisor = size & (~size + 1);
    return allocated(size, std::clamp<std::size_t>(divisor, 1, __STDCPP_DEFAULT_NEW_ALIGNMENT__));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocated(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* block) noexcept {
    guard::release(block);
}

void operator delete(void* block, std::size_t) noexcept {
    guard::release(block);
}

void operator delete(void* block, std::align_val_t) noexcept {
    guard::release(block);
}

void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    guard::release(block);
}
