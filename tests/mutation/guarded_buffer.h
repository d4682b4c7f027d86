/// @file
/// Memory that ends at an inaccessible page.
#pragma once

#include <windows.h>

#include <new>

/// Memory of a caller that ends at an inaccessible page, so that a byte written behind it is a fault.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t most)
        : size_((most + page - 1) / page * page),
          begin_(static_cast<char*>(VirtualAlloc(nullptr, size_ + page, MEM_RESERVE, PAGE_NOACCESS))) {
        if (!begin_ || !VirtualAlloc(begin_, size_, MEM_COMMIT, PAGE_READWRITE)) {
            throw std::bad_alloc();
        }
    }
    ~GuardedBuffer() { VirtualFree(begin_, 0, MEM_RELEASE); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    size_t size() const { return size_; }
    /// The last `bytes` bytes, at most `size`.
    char* last(size_t bytes) { return begin_ + size_ - bytes; }

private:
    static constexpr size_t page = 4096;
    size_t size_;
    char* begin_;
};
