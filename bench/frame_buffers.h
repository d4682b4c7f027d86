/// @file
/// Memory for frames, aligned as unbuffered files want it.
#pragma once

#include <memory>
#include <vector>

/// Equal buffers of bytes, each aligned to a page, filled with bytes that differ from buffer to buffer. The
/// pages are touched, so that using them costs no page fault.
class FrameBuffers {
public:
    /// Throws std::bad_alloc.
    FrameBuffers(size_t count, size_t size);

    size_t count() const { return buffers_.size(); }
    size_t size() const { return size_; }
    /// Buffer number `index` modulo their count.
    unsigned char* operator[](size_t index) const { return buffers_[index % buffers_.size()].get(); }

private:
    struct Free {
        void operator()(unsigned char* buffer) const;
    };

    size_t size_;
    std::vector<std::unique_ptr<unsigned char[], Free>> buffers_;
};

/// Seconds that one copy of `size` bytes takes between buffers that no cache holds: each copy goes from one
/// buffer to another that were both last touched more than 100 MB of copying ago. Median over all copies.
double coldCopy_s(size_t size);
