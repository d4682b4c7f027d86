/// @file
/// The source of media samples.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/video/reference.h"

namespace vvideo {

/// Owns a system memory allocator, from which output pins take their samples. Not thread-safe, but
/// `getSample` may wait on one thread while another calls `done`, which ends the wait.
class MARVO_API dvAlloc {
public:
    /// Creates the allocator. Where COM is not up yet on this thread there is none, and `create` makes it
    /// later.
    dvAlloc();
    /// Shares the allocator, with a reference added.
    dvAlloc(const dvAlloc& source) = default;
    /// Decommits and releases the allocator. Samples that are out stay valid.
    ~dvAlloc();
    /// Gives the own allocator up as the destructor does and shares the source's.
    dvAlloc& operator=(const dvAlloc& source);

    /// Makes a new allocator instead of the present one, for the thread that will use it. Whether there is
    /// one.
    bool create();
    /// Commits `buffers` buffers of `bufferSize` bytes. `align` must be at least 1: the system allocator
    /// refuses 0. False without an allocator, when all buffers together reach 2 GB, or when the allocator
    /// refuses; one that keeps its former buffers, since samples are still out, will do if they are as many
    /// and as large.
    bool init(unsigned long bufferSize, unsigned long buffers, unsigned long prefix, unsigned long align);
    /// Decommits the allocator: waiting `getSample` calls fail.
    void done();
    /// Takes a sample with one reference for the caller, waiting until a buffer is free. Times in 100 ns,
    /// negative for none. False when not committed.
    bool getSample(IMediaSample** out, long long start, long long stop);

    /// Number of buffers committed last, 0 when not committed.
    unsigned long count() const { return count_; }
    /// The thread that created the allocator; all ones after a failed re-creation.
    unsigned long threadID() const { return threadID_; }
    /// The allocator without a reference added, null when there is none.
    operator IMemAllocator*() const { return allocator_.get(); }
    /// For calls on the allocator, which must be there.
    IMemAllocator* operator->() { return allocator_.get(); }

private:
    bool createAllocator();

    Reference<IMemAllocator> allocator_;
    unsigned long count_ = 0;
    unsigned long threadID_;
};

} // namespace vvideo
