/// @file
/// The engine's system calls without the engine, to compare with.
#pragma once

#include "bench/counting_pin.h"
#include "bench/recording.h"
#include "bench/sample_pool.h"

#include <atomic>
#include <thread>

/// What the engine's pipeline asks of the system for each frame, without the engine and without a copy of a
/// frame: a thread that the system's clock wakes once per frame, and that rests 5 ms and takes and gives back
/// a sample; and, when it records, a writer that sleeps 10 ms at a time until a frame is there, writes one
/// record unbuffered, and flushes once per ring's worth of frames.
class BarePipeline {
public:
    /// Throws std::runtime_error when the file or the clock cannot be had.
    BarePipeline(size_t frameSize, int ringFrames, long long period_100ns, bool recording);
    ~BarePipeline();
    BarePipeline(const BarePipeline&) = delete;
    BarePipeline& operator=(const BarePipeline&) = delete;

    /// Where frames are fed.
    IMemInputPin* input() { return &sink_; }

private:
    void write();
    void show();

    const int ringFrames_;
    TemporaryFile file_{L"bench_bare.dv"};
    vcore::handle handle_;
    FrameBuffers record_;
    SamplePool pool_;
    vwin::com_<IReferenceClock> clock_;
    vcore::semaphore tick_{1, nullptr};
    DWORD_PTR advice_ = 0;
    CountingPin sink_;
    std::atomic<bool> stop_ = false;
    std::thread writer_;
    std::thread player_;
};
