/// @file
/// The guarded heap: each block ends at an inaccessible page.
#pragma once

#include "marvo/core/platform.h"

#include <cstddef>

/// What the guarded link of the library, and the programs that run with it, allocate with instead of the
/// run-time library's heap: an access behind a block, or to one that was freed, is a fault at once and at the
/// place. All functions may be called by any thread and before any other code of the program has run.
///
/// In the address space of 32 bits there is room for some hundred thousand blocks at a time, since each takes
/// two pages or more.
namespace guard {

constexpr std::size_t pageSize = 4096;

/// What fresh blocks are filled with, so that nobody takes them for zeros.
constexpr unsigned char freshByte = 0xCD;

/// `size` bytes (0 counts as 1) at a multiple of `alignment`, a power of two up to `pageSize`; null without
/// memory. The byte behind the block lies in an inaccessible page, except where the alignment does not divide
/// the size: what lies between then is checked when the block is freed, as is what lies in front of the block
/// in its page.
MARVO_API void* allocate(std::size_t size, std::size_t alignment) noexcept;

/// Frees a block (null: nothing). Its pages stay inaccessible until some thousand other blocks have been
/// freed.
MARVO_API void release(void* block) noexcept;

/// Is told what is wrong with a block that is being freed. The default prints it and stops the process.
using Reporter = void (*)(const char* fault, const void* block);

/// Sets another reporter and returns the one before.
MARVO_API Reporter setReporter(Reporter reporter) noexcept;

} // namespace guard
