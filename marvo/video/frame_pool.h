/// @file
/// The frame ring.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/video/frame.h"

#include <memory>

namespace vvideo {

/// A ring of equal frames with a 64-bit write and read position; position p lies in slot p modulo the count.
///
/// Any number of threads: each member holds the ring's own lock (taken after its owner's, never before) for
/// its whole duration. A frame returned is used after the lock is released; its users coordinate themselves
/// by the positions.
class MARVO_API dvFramePool {
public:
    /// Frames of a ring take no more bytes together, with what is known of each: half of what a 32-bit
    /// process has, and on 64 bits what a machine for video has to spare. A larger ring is a mistake, which
    /// would take the memory of everything else where the system promises more than it has.
    static constexpr unsigned long long mostBytes = sizeof(void*) == 4 ? 1ull << 30 : 1ull << 34;

    /// Without frames, both positions 0.
    dvFramePool();
    ~dvFramePool() = default;
    dvFramePool(const dvFramePool&) = delete;
    /// Copies frames and positions. The locks are taken one after the other, never both.
    dvFramePool& operator=(const dvFramePool& source);

    /// Discards everything and makes `count` frames of `frameSize` bytes with undefined contents, both
    /// positions 0. False when there is not enough memory or it would be more than `mostBytes`; the ring is
    /// then as after `done`.
    bool init(unsigned long frameSize, unsigned long count);
    /// Frees the frames; both positions become all ones.
    void done();

    /// The frame at a position, null when there are none.
    dvFrame* frame(unsigned long long pos) const;
    /// The next position to write.
    unsigned long long inPos() const;
    /// The next position to read.
    unsigned long long outPos() const;
    /// Moves the write position on by one; the result is the position before.
    unsigned long long incIn();
    /// The same for the read position.
    unsigned long long incOut();
    /// Sets the read position half a ring behind the write position and returns it. Deliberately not clamped:
    /// before half a ring was written it wraps to a huge number.
    unsigned long long correctOut();
    /// How far the write position is ahead of the read position.
    long long advantage() const;
    /// Whether the writer is about to overwrite a slot that was not read.
    bool overrun() const;
    /// Whether nothing is left to read.
    bool underrun() const;
    /// Takes the frame at the write position out of the ring for the caller to fill: no number leads to it
    /// until `publish`. Null when there are no frames.
    dvFrame* claim();
    /// Gives the frame at the write position its number and moves that position on, in one step: whoever
    /// finds the number, or sees the position, finds the contents.
    void publish(unsigned long long number);
    /// Empties every frame and sets both positions to 0.
    void flush() { set(0); }
    /// Empties every frame and sets both positions to `pos`.
    void set(unsigned long long pos);

    /// The first frame in slot order with that number, null when there is none. `noFrame` is no number: null,
    /// however many slots are empty.
    dvFrame* findFrame(unsigned long long id);
    /// Sets every frame's access counter to -1.
    void resetAccess();
    /// Lowers every frame's access counter by one.
    void lowerAccess();
    /// The frame with the lowest access counter, the first one of several; null when there are no frames.
    dvFrame* findOldest();

    /// Bytes per frame.
    unsigned long frameSize() const;
    /// The ring's capacity in frames.
    unsigned long count() const;

private:
    using Frames = std::unique_ptr<std::unique_ptr<dvFrame>[]>;

    static bool makeFrames(unsigned long frameSize, unsigned long count, Frames& made);
    std::unique_ptr<dvFrame>* begin() const MARVO_REQUIRES(lock_) { return frames_.get(); }
    std::unique_ptr<dvFrame>* end() const MARVO_REQUIRES(lock_) { return frames_.get() + count_; }

    vcore::semaphore lock_;
    Frames frames_ MARVO_GUARDED_BY(lock_);
    unsigned long frameSize_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long count_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long long inPos_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long long outPos_ MARVO_GUARDED_BY(lock_) = 0;
};

} // namespace vvideo
