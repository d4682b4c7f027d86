/// @file
/// A thread that goes after the shown frame.
#pragma once

#include "app/window/frame_source.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace app {

/// Reads the frame that is shown, again for each that comes, on a thread of its own, and gives its bytes to a
/// derived class. What is too slow for that leaves frames out, and never holds the window up.
class FrameFollower {
public:
    FrameFollower(const FrameFollower&) = delete;
    FrameFollower& operator=(const FrameFollower&) = delete;
    virtual ~FrameFollower() = default;

    /// This frame is shown now. With `everyFrame` those between it and the one before are given too, when it
    /// is at most half a second further in the same file: sound has no gaps then.
    void follow(const FrameAddress& address, bool everyFrame);
    /// Nothing is shown.
    void pause();

protected:
    FrameFollower() = default;
    /// Starts the thread, which has COM.
    void start();
    /// Ends the thread; a derived class calls it before its members go.
    void stop();
    /// A frame's bytes, on the thread.
    virtual void take(const std::vector<unsigned char>& bytes) = 0;
    /// The thread ends, or nothing is shown any more: what belongs to the thread is given back there.
    virtual void rest() = 0;

private:
    void run();
    void deliver(const FrameAddress& address, bool everyFrame);

    std::mutex lock_;
    std::condition_variable news_;
    FrameAddress wanted_;
    bool everyFrame_ = false;
    bool waiting_ = false; ///< `wanted_` was not taken yet
    bool pausing_ = false;
    bool ending_ = false;
    std::thread thread_;
    // The thread's own.
    FrameSource source_;
    FrameAddress last_;
    std::vector<unsigned char> bytes_;
};

} // namespace app
