/// @file
/// Media samples of the system's allocator, to be filled with frames.
#pragma once

#include "bench/frame_buffers.h"
#include "marvo.h"

/// Media samples of the system's allocator.
class SamplePool {
public:
    /// Throws std::runtime_error when the system gives no allocator.
    SamplePool(long count, size_t size);
    ~SamplePool();
    SamplePool(const SamplePool&) = delete;
    SamplePool& operator=(const SamplePool&) = delete;

    IMemAllocator* allocator() const { return allocator_.ptr(); }

    /// A free sample, waited for, filled with the bytes of `frame`.
    vwin::com_<IMediaSample> sample(const unsigned char* frame) const;

private:
    const size_t size_;
    vwin::com_<IMemAllocator> allocator_;
};

/// The bytes of a sample.
unsigned char* bytesOf(IMediaSample* sample);
