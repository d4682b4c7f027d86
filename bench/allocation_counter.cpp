#include "bench/allocation_counter.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>

namespace {

enum Function {
    mallocs,
    callocs,
    reallocs,
    alignedMallocs,
    heapAllocs,
    heapReAllocs,
    virtualAllocs,
    localAllocs,
    globalAllocs,
    taskAllocs,
    stringAllocs,
    functionCount
};

std::array<std::atomic<unsigned long long>, functionCount> counts;

void* __cdecl countingMalloc(size_t size) {
    ++counts[mallocs];
    return std::malloc(size);
}

void* __cdecl countingCalloc(size_t count, size_t size) {
    ++counts[callocs];
    return std::calloc(count, size);
}

void* __cdecl countingRealloc(void* block, size_t size) {
    ++counts[reallocs];
    return std::realloc(block, size);
}

void* __cdecl countingAlignedMalloc(size_t size, size_t alignment) {
    ++counts[alignedMallocs];
    return _aligned_malloc(size, alignment);
}

void* WINAPI countingHeapAlloc(HANDLE heap, DWORD flags, SIZE_T size) {
    ++counts[heapAllocs];
    return HeapAlloc(heap, flags, size);
}

void* WINAPI countingHeapReAlloc(HANDLE heap, DWORD flags, void* block, SIZE_T size) {
    ++counts[heapReAllocs];
    return HeapReAlloc(heap, flags, block, size);
}

void* WINAPI countingVirtualAlloc(void* address, SIZE_T size, DWORD type, DWORD protection) {
    ++counts[virtualAllocs];
    return VirtualAlloc(address, size, type, protection);
}

HLOCAL WINAPI countingLocalAlloc(UINT flags, SIZE_T size) {
    ++counts[localAllocs];
    return LocalAlloc(flags, size);
}

HGLOBAL WINAPI countingGlobalAlloc(UINT flags, SIZE_T size) {
    ++counts[globalAllocs];
    return GlobalAlloc(flags, size);
}

void* WINAPI countingTaskAlloc(SIZE_T size) {
    ++counts[taskAllocs];
    return CoTaskMemAlloc(size);
}

BSTR WINAPI countingStringAlloc(const OLECHAR* text) {
    ++counts[stringAllocs];
    return SysAllocString(text);
}

struct Replacement {
    const char* name;
    void* function;
};

template <class F>
void* address(F* function) {
    return reinterpret_cast<void*>(function);
}

/// In the order of `Function`.
const Replacement replacements[functionCount] = {
    {"malloc", address(countingMalloc)},
    {"calloc", address(countingCalloc)},
    {"realloc", address(countingRealloc)},
    {"_aligned_malloc", address(countingAlignedMalloc)},
    {"HeapAlloc", address(countingHeapAlloc)},
    {"HeapReAlloc", address(countingHeapReAlloc)},
    {"VirtualAlloc", address(countingVirtualAlloc)},
    {"LocalAlloc", address(countingLocalAlloc)},
    {"GlobalAlloc", address(countingGlobalAlloc)},
    {"CoTaskMemAlloc", address(countingTaskAlloc)},
    {"SysAllocString", address(countingStringAlloc)},
};

} // namespace

AllocationCounter::AllocationCounter() {
    reset();
    for (const Replacement& replacement : replacements) {
        patches_.push_back(
            std::make_unique<ImportPatch>(engineModule(), replacement.name, replacement.function));
    }
}

void AllocationCounter::reset() {
    for (auto& count : counts) {
        count = 0;
    }
}

unsigned long long AllocationCounter::count() const {
    unsigned long long sum = 0;
    for (const auto& count : counts) {
        sum += count;
    }
    return sum;
}

std::string AllocationCounter::text() const {
    std::string text;
    for (size_t i = 0; i < functionCount; ++i) {
        if (counts[i] != 0) {
            text += (text.empty() ? "" : ", ") + std::string(replacements[i].name) + " " +
                    std::to_string(counts[i]);
        }
    }
    return text;
}

size_t AllocationCounter::functions() const {
    return static_cast<size_t>(std::count_if(patches_.begin(), patches_.end(),
                                             [](const auto& patch) { return patch->original() != nullptr; }));
}
