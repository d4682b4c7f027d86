#include "guard/guard_heap.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace guard {

namespace {

constexpr unsigned char marginByte = 0xFD;
constexpr std::size_t arenaPages = 16384;
constexpr std::size_t mostArenas = 128;
/// A block with its margins would not fit into any address space, and its number of pages not into 32 bits.
constexpr std::size_t mostBytes = SIZE_MAX / 4;

// The quarantine; a longer one finds older uses after the end, but takes address space.
constexpr std::size_t quarantineRuns = 4096;
constexpr std::size_t quarantinePages = 16384;

/// The first page of a run says what the run is, the others that they are taken.
struct Page {
    enum class State : unsigned char { free, taken, block, quarantined };
    State state;
    std::uint32_t runPages; ///< with the inaccessible one at the end
    std::size_t size;       ///< the block's
    unsigned char* block;
};

/// A piece of reserved address space.
struct Arena {
    unsigned char* base;
    Page* pages;
    std::size_t count;
    std::size_t cursor; ///< where the next search begins
};

struct Run {
    Arena* arena;
    std::size_t page;
};

/// Nothing has a constructor that must have run: the first blocks are wanted before that.
struct Heap {
    SRWLOCK lock = SRWLOCK_INIT; ///< guards all the others
    Arena arenas[mostArenas] = {};
    Run quarantine[quarantineRuns] = {};
    std::size_t oldest = 0;
    std::size_t quarantined = 0;
    std::size_t quarantinedPages = 0;
};

constinit Heap heap;

class Guard {
public:
    Guard() { AcquireSRWLockExclusive(&heap.lock); }
    ~Guard() { ReleaseSRWLockExclusive(&heap.lock); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};

void stop(const char* fault, const void* block) {
    std::fprintf(stderr, "guarded heap: %s (block %p)\n", fault, block);
    std::fflush(stderr);
    vcore::trap();
}

Reporter report = stop;

void* reserve(std::size_t bytes, DWORD alsoCommit) {
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | alsoCommit, PAGE_READWRITE);
}

void giveUp(Arena& arena) {
    if (arena.base) {
        VirtualFree(arena.base, 0, MEM_RELEASE);
    }
    if (arena.pages) {
        VirtualFree(arena.pages, 0, MEM_RELEASE);
    }
    arena = {};
}

bool openArena(Arena& arena, std::size_t pages) {
    arena.base = static_cast<unsigned char*>(reserve(pages * pageSize, 0));
    arena.pages = static_cast<Page*>(reserve(pages * sizeof(Page), MEM_COMMIT));
    arena.count = pages;
    if (arena.base && arena.pages) {
        return true;
    }
    giveUp(arena);
    return false;
}

/// The first of `wanted` free pages between `begin` and `end`; `end` when there are none.
std::size_t findFree(const Arena& arena, std::size_t begin, std::size_t end, std::size_t wanted) {
    std::size_t found = 0;
    for (std::size_t page = begin; page < end; ++page) {
        found = arena.pages[page].state == Page::State::free ? found + 1 : 0;
        if (found == wanted) {
            return page + 1 - wanted;
        }
    }
    return end;
}

/// Takes `wanted` pages of an arena; `arena.count` when there are none.
std::size_t takePages(Arena& arena, std::size_t wanted) {
    std::size_t first = findFree(arena, arena.cursor, arena.count, wanted);
    if (first == arena.count) {
        first = findFree(arena, 0, arena.count, wanted);
    }
    if (first == arena.count) {
        return first;
    }
    arena.cursor = first + wanted;
    for (std::size_t page = first; page < arena.cursor; ++page) {
        arena.pages[page].state = Page::State::taken;
    }
    arena.pages[first].runPages = static_cast<std::uint32_t>(wanted);
    return first;
}

/// Takes `wanted` pages of any arena, of a new one if need be; no arena without room.
Run takeRun(std::size_t wanted) {
    for (Arena& arena : heap.arenas) {
        if (!arena.base && !openArena(arena, std::max(arenaPages, wanted))) {
            return {};
        }
        const std::size_t page = takePages(arena, wanted);
        if (page != arena.count) {
            return {&arena, page};
        }
    }
    return {};
}

void freeRun(const Run& run) {
    Arena& arena = *run.arena;
    if (arena.count > arenaPages) { // it was made for this run alone
        return giveUp(arena);
    }
    const std::size_t end = run.page + arena.pages[run.page].runPages;
    for (std::size_t page = run.page; page < end; ++page) {
        arena.pages[page] = {};
    }
}

/// Lets the oldest freed blocks go until no more than so many are left.
void shrinkQuarantine(std::size_t runs, std::size_t pages) {
    while (heap.quarantined > runs || heap.quarantinedPages > pages) {
        const Run run = heap.quarantine[heap.oldest];
        heap.quarantinedPages -= run.arena->pages[run.page].runPages;
        freeRun(run);
        heap.oldest = (heap.oldest + 1) % quarantineRuns;
        --heap.quarantined;
    }
}

void keepInQuarantine(const Run& run) {
    shrinkQuarantine(quarantineRuns - 1, quarantinePages);
    heap.quarantine[(heap.oldest + heap.quarantined) % quarantineRuns] = run;
    ++heap.quarantined;
    heap.quarantinedPages += run.arena->pages[run.page].runPages;
    shrinkQuarantine(quarantineRuns, quarantinePages);
}

/// The run in whose first page an address lies; no arena when it lies in no arena.
Run runOf(const unsigned char* address) {
    for (Arena& arena : heap.arenas) {
        if (arena.base && address >= arena.base && address < arena.base + arena.count * pageSize) {
            return {&arena, static_cast<std::size_t>(address - arena.base) / pageSize};
        }
    }
    return {};
}

bool isMargin(const unsigned char* begin, const unsigned char* end) {
    return std::all_of(begin, end, [](unsigned char byte) { return byte == marginByte; });
}

/// What is wrong with the freeing of a block; null when nothing is.
const char* faultOf(const Run& run, const unsigned char* block) {
    if (!run.arena) {
        return "freed, but not allocated here";
    }
    const Page& page = run.arena->pages[run.page];
    if (page.state == Page::State::quarantined) {
        return "freed twice";
    }
    if (page.state != Page::State::block || page.block != block) {
        return "freed, but no block begins here";
    }
    const unsigned char* const begin = run.arena->base + run.page * pageSize;
    if (!isMargin(begin, block)) {
        return "overwritten in front of the block";
    }
    if (!isMargin(block + page.size, begin + (page.runPages - 1) * pageSize)) {
        return "overwritten behind the block";
    }
    return nullptr;
}

} // namespace

void* allocate(std::size_t size, std::size_t alignment) noexcept {
    size = std::max<std::size_t>(size, 1);
    if (size > mostBytes || alignment > pageSize) {
        return nullptr;
    }
    const std::size_t bytes = (size + pageSize - 1) / pageSize * pageSize;
    const Guard held;
    Run run = takeRun(bytes / pageSize + 1);
    if (!run.arena) {
        shrinkQuarantine(0, 0);
        run = takeRun(bytes / pageSize + 1);
    }
    if (!run.arena) {
        return nullptr;
    }
    unsigned char* const begin = run.arena->base + run.page * pageSize;
    if (!VirtualAlloc(begin, bytes, MEM_COMMIT, PAGE_READWRITE)) {
        freeRun(run);
        return nullptr;
    }
    unsigned char* const block = begin + (bytes - size) / alignment * alignment;
    std::memset(begin, marginByte, static_cast<std::size_t>(block - begin));
    std::memset(block, freshByte, size);
    std::memset(block + size, marginByte, static_cast<std::size_t>(begin + bytes - block) - size);
    Page& page = run.arena->pages[run.page];
    page.state = Page::State::block;
    page.size = size;
    page.block = block;
    return block;
}

void release(void* block) noexcept {
    if (!block) {
        return;
    }
    const auto* const address = static_cast<const unsigned char*>(block);
    const char* fault = nullptr;
    {
        const Guard held;
        const Run run = runOf(address);
        fault = faultOf(run, address);
        if (run.arena && run.arena->pages[run.page].block == address &&
            run.arena->pages[run.page].state == Page::State::block) {
            Page& page = run.arena->pages[run.page];
            page.state = Page::State::quarantined;
            VirtualFree(run.arena->base + run.page * pageSize, page.runPages * pageSize, MEM_DECOMMIT);
            keepInQuarantine(run);
        }
    }
    if (fault) {
        report(fault, block);
    }
}

Reporter setReporter(Reporter reporter) noexcept {
    const Reporter before = report;
    report = reporter;
    return before;
}

} // namespace guard
