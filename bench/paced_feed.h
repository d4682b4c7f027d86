/// @file
/// Feeds frames to a pin at the pace of a camera.
#pragma once

#include "bench/frame_buffers.h"
#include "bench/sample_pool.h"

/// Feeds an input pin with frames at a steady rate as a capture device does: each frame is copied into a
/// sample of the device's allocator and received by the pin.
class PacedFeed {
public:
    /// Frames of `frameSize` bytes, one every `period_s`.
    PacedFeed(size_t frameSize, double period_s);

    IMemAllocator* allocator() const { return pool_.allocator(); }

    /// Feeds `frames` frames from now on, on the calling thread. Frames that are late follow at once.
    void feed(IMemInputPin* pin, int frames) const;

private:
    const double period_s_;
    const FrameBuffers frames_;
    const SamplePool pool_;
};
