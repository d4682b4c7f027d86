#include "app/window/frame_follower.h"

#include <algorithm>

namespace app {

namespace {

constexpr std::uint64_t mostCatchUp_frames = 12;

} // namespace

void FrameFollower::follow(const FrameAddress& address, bool everyFrame) {
    {
        const std::lock_guard guard(lock_);
        if (address == wanted_ && !pausing_) {
            return;
        }
        wanted_ = address;
        everyFrame_ = everyFrame;
        waiting_ = true;
        pausing_ = false;
    }
    news_.notify_one();
}

void FrameFollower::pause() {
    {
        const std::lock_guard guard(lock_);
        if (pausing_) {
            return;
        }
        pausing_ = true;
        waiting_ = false;
    }
    news_.notify_one();
}

void FrameFollower::start() {
    if (!thread_.joinable()) {
        ending_ = false;
        thread_ = std::thread([this] { run(); });
    }
}

void FrameFollower::stop() {
    if (thread_.joinable()) {
        {
            const std::lock_guard guard(lock_);
            ending_ = true;
        }
        news_.notify_one();
        thread_.join();
    }
}

void FrameFollower::run() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    std::unique_lock guard(lock_);
    bool resting = true;
    while (!ending_) {
        if (waiting_) {
            waiting_ = false;
            resting = false;
            const FrameAddress address = wanted_;
            const bool everyFrame = everyFrame_;
            guard.unlock();
            deliver(address, everyFrame);
            guard.lock();
        } else if (pausing_ && !resting) {
            resting = true;
            guard.unlock();
            last_ = {};
            source_.close();
            rest();
            guard.lock();
        } else {
            news_.wait(guard);
        }
    }
    guard.unlock();
    source_.close();
    rest();
    CoUninitialize();
}

void FrameFollower::deliver(const FrameAddress& address, bool everyFrame) {
    FrameAddress next = address;
    if (everyFrame && address.file == last_.file && address.frame > last_.frame &&
        address.frame - last_.frame <= mostCatchUp_frames) {
        next.frame = last_.frame + 1;
    }
    for (; next.frame <= address.frame; ++next.frame) {
        if (source_.read(next, bytes_)) {
            take(bytes_);
        }
    }
    last_ = address;
}

} // namespace app
