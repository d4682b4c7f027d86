/// @file
/// The camera's thread: frames at their times.
#pragma once

#include "devices/camera_config.h"
#include "devices/dv_stream.h"
#include "devices/event.h"
#include "devices/lock.h"
#include "devices/output_pin.h"

#include <functional>
#include <memory>

namespace devices {

/// Delivers the stream's frames downstream, paced by a reference clock or, without one, by the computer's
/// own, with the configured faults. A frame that is due while downstream is busy follows at once when it is
/// free again: none is lost but those the configuration names. A downstream filter that refuses a frame
/// misses it; the camera goes on.
///
/// Samples carry the stream times of their frame periods and, as media time, the number of the period. Every
/// delivery writes its line to the log just before it (delivery, source frame, milliseconds of the
/// performance counter); lines that begin with # tell of starts, losses and refused deliveries.
///
/// Threads: made, run, paused and stopped by the filter under its `control()`; one thread of its own, which
/// takes `order_lock_` only and no lock of the filter's.
class camera_feed {
public:
    /// Called on the feed's thread: the device went (false) or came back (true).
    using presence_report = std::function<void(bool present)>;

    /// `stream` is open; `link` is connected and committed.
    camera_feed(const camera_config& config, std::shared_ptr<const dv_stream> stream, output_pin::link link,
                presence_report report);
    camera_feed(const camera_feed&) = delete;
    camera_feed& operator=(const camera_feed&) = delete;
    /// Needs a feed that has been stopped.
    ~camera_feed();

    /// Makes the thread, which waits for `run`. False when there is none to be had.
    bool start();
    /// Lets frames flow from stream time 0 = `start` on the clock, which is kept until stopped.
    void run(IReferenceClock* clock, REFERENCE_TIME start);
    /// Holds the frames back; the next `run` goes on with the following one.
    void pause();
    /// Tells the thread to end. The caller then frees it from where it may be blocked.
    void ask_to_stop();
    /// Waits for the thread's end; false after the time.
    bool ended(DWORD ms);

private:
    enum class order { wait, run, stop };

    static DWORD WINAPI thread_main(void* self);
    void deliver_until_stopped();
    void deliver_while_running();
    bool deliver(uint64_t frame, REFERENCE_TIME start, REFERENCE_TIME end);
    void lose_device(std::optional<uint32_t> return_ms);
    void write_log(const char* format, ...);

    order current_order();
    void give_order(order next);
    REFERENCE_TIME now() const;
    bool wait_until(REFERENCE_TIME due);
    void wait_for_order(DWORD ms);
    REFERENCE_TIME offset_of(uint64_t frame) const;

    const camera_config config_;
    const std::shared_ptr<const dv_stream> stream_;
    const dv_system& system_;
    const output_pin::link link_;
    const presence_report report_;
    file_handle log_;

    lock order_lock_; // guards the three below
    order order_ = order::wait;
    com_ref<IReferenceClock> next_clock_;
    REFERENCE_TIME next_start_ = 0;

    event order_changed_;
    event clock_tick_;
    HANDLE thread_ = nullptr;

    // The thread's own.
    com_ref<IReferenceClock> clock_;
    uint64_t frame_ = 0;     // the next frame period
    uint64_t delivered_ = 0; // deliveries so far
    bool discontinuity_ = true;
};

} // namespace devices
