#include "devices/camera_feed.h"

#include "devices/device_presence.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace devices {

namespace {

const REFERENCE_TIME second = 10000000;
const REFERENCE_TIME millisecond = 10000;

LONGLONG performance_count() {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

double performance_seconds() {
    static const double frequency = [] {
        LARGE_INTEGER value;
        QueryPerformanceFrequency(&value);
        return static_cast<double>(value.QuadPart);
    }();
    return static_cast<double>(performance_count()) / frequency;
}

/// The first log of a process empties the file, later ones go on.
file_handle open_log(const std::wstring& path) {
    static lock opened_lock;
    static std::wstring opened;
    guard held(opened_lock);
    file_handle file;
    if (path.empty()) {
        return file;
    }
    file = file_handle::open_to_append(path, path != opened);
    if (file) {
        opened = path;
    } else {
        std::fprintf(stderr, "camera: cannot write the log %ls\n", path.c_str());
    }
    return file;
}

} // namespace

camera_feed::camera_feed(const camera_config& config, std::shared_ptr<const dv_stream> stream,
                         output_pin::link link, presence_report report)
    : config_(config), stream_(std::move(stream)), system_(*stream_->system()), link_(std::move(link)),
      report_(std::move(report)), log_(open_log(config.log)) {}

camera_feed::~camera_feed() {
    if (thread_) {
        CloseHandle(thread_);
    }
}

bool camera_feed::start() {
    write_log("# start: %s, %llu frames\n", system_.name, static_cast<unsigned long long>(stream_->frames()));
    if (order_changed_.handle() && clock_tick_.handle()) {
        thread_ = CreateThread(nullptr, 0, &camera_feed::thread_main, this, 0, nullptr);
    }
    return thread_ != nullptr;
}

void camera_feed::run(IReferenceClock* clock, REFERENCE_TIME start) {
    {
        guard held(order_lock_);
        next_clock_ = com_ref<IReferenceClock>(clock);
        next_start_ = start;
    }
    give_order(order::run);
}

void camera_feed::pause() {
    give_order(order::wait);
}

void camera_feed::ask_to_stop() {
    give_order(order::stop);
}

bool camera_feed::ended(DWORD ms) {
    return !thread_ || WaitForSingleObject(thread_, ms) == WAIT_OBJECT_0;
}

DWORD WINAPI camera_feed::thread_main(void* self) {
    const HRESULT com = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
    static_cast<camera_feed*>(self)->deliver_until_stopped();
    if (SUCCEEDED(com)) {
        CoUninitialize();
    }
    return 0;
}

void camera_feed::deliver_until_stopped() {
    for (;;) {
        switch (current_order()) {
        case order::wait:
            wait_for_order(INFINITE);
            break;
        case order::run:
            deliver_while_running();
            break;
        case order::stop:
            clock_.reset();
            return;
        }
    }
}

void camera_feed::deliver_while_running() {
    REFERENCE_TIME start;
    {
        guard held(order_lock_);
        clock_ = next_clock_;
        start = next_start_;
    }
    if (!clock_) {
        start = now();
    }
    // Frames begin now, or when stream time begins if that is later; stalls move all that follows.
    const REFERENCE_TIME begin = std::max(now(), start) - offset_of(frame_);
    REFERENCE_TIME stalled = 0;
    while (current_order() == order::run) {
        if (const size_t lost = device_presence::losses();
            lost < config_.losses.size() && frame_ == config_.losses[lost].frame) {
            lose_device(config_.losses[lost].return_ms);
            return;
        }
        stalled += static_cast<REFERENCE_TIME>(config_.stall_before(frame_)) * millisecond;
        // A burst comes when its last frame is due, as if its frames had been held up on the way.
        const uint64_t burst_last = frame_ - frame_ % config_.burst + config_.burst - 1;
        if (!wait_until(begin + stalled + offset_of(burst_last))) {
            return;
        }
        const REFERENCE_TIME from = begin + stalled + offset_of(frame_) - start;
        const REFERENCE_TIME to = begin + stalled + offset_of(frame_ + 1) - start;
        if (config_.drops_frame(frame_)) {
            discontinuity_ = true;
        } else if (deliver(frame_, from, to)) {
            discontinuity_ = false;
        }
        ++frame_;
    }
}

bool camera_feed::deliver(uint64_t frame, REFERENCE_TIME start, REFERENCE_TIME end) {
    com_ref<IMediaSample> sample;
    HRESULT result = link_.allocator->GetBuffer(sample.put(), nullptr, nullptr, 0);
    if (FAILED(result) || !sample) {
        return false;
    }
    BYTE* bytes = nullptr;
    const long size = static_cast<long>(system_.frame_bytes);
    if (FAILED(sample->GetPointer(&bytes)) || sample->GetSize() < size || !stream_->read(frame, bytes)) {
        write_log("# frame %llu cannot be read\n", static_cast<unsigned long long>(frame));
        return false;
    }
    LONGLONG first = static_cast<LONGLONG>(frame);
    LONGLONG last = first + 1;
    sample->SetActualDataLength(size);
    sample->SetTime(&start, &end);
    sample->SetMediaTime(&first, &last);
    sample->SetSyncPoint(TRUE);
    sample->SetPreroll(FALSE);
    sample->SetDiscontinuity(discontinuity_);

    const uint64_t delivery = delivered_++;
    write_log("%llu %llu %.3f\n", static_cast<unsigned long long>(delivery),
              static_cast<unsigned long long>(frame % stream_->frames()), performance_seconds() * 1000);
    result = link_.transport->Receive(sample.get());
    if (result != S_OK) {
        write_log("# delivery %llu refused: %08lx\n", static_cast<unsigned long long>(delivery),
                  static_cast<unsigned long>(result));
    }
    return result == S_OK;
}

void camera_feed::lose_device(std::optional<uint32_t> return_ms) {
    device_presence::lose(return_ms);
    write_log("# device lost before frame %llu at %.3f\n", static_cast<unsigned long long>(frame_),
              performance_seconds() * 1000);
    report_(false);
    bool told = false;
    while (current_order() != order::stop) {
        const auto left = device_presence::returns_in();
        if (left && *left == 0 && !told) {
            told = true;
            report_(true);
        }
        wait_for_order(told || !left ? INFINITE : *left);
    }
}

void camera_feed::write_log(const char* format, ...) {
    if (!log_) {
        return;
    }
    char line[128];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    log_.append(line);
}

camera_feed::order camera_feed::current_order() {
    guard held(order_lock_);
    return order_;
}

void camera_feed::give_order(order next) {
    {
        guard held(order_lock_);
        order_ = next;
    }
    order_changed_.set();
}

REFERENCE_TIME camera_feed::now() const {
    REFERENCE_TIME time = 0;
    if (clock_ && SUCCEEDED(clock_->GetTime(&time))) {
        return time;
    }
    return static_cast<REFERENCE_TIME>(performance_seconds() * second);
}

/// False when the order changed before the time came.
bool camera_feed::wait_until(REFERENCE_TIME due) {
    const REFERENCE_TIME check = second / 2; // so long at most without a look at the clock and the order
    for (REFERENCE_TIME left = due - now(); left > 0; left = due - now()) {
        const DWORD ms = static_cast<DWORD>(std::min(left, check) / millisecond);
        DWORD_PTR advice = 0;
        clock_tick_.reset();
        if (clock_ &&
            SUCCEEDED(clock_->AdviseTime(due, 0, reinterpret_cast<HEVENT>(clock_tick_.handle()), &advice))) {
            const HANDLE events[] = {order_changed_.handle(), clock_tick_.handle()};
            if (WaitForMultipleObjects(2, events, FALSE, ms + 20) != WAIT_OBJECT_0 + 1) {
                clock_->Unadvise(advice);
            }
        } else {
            wait_for_order(ms + 1);
        }
        if (current_order() != order::run) {
            return false;
        }
    }
    return current_order() == order::run;
}

void camera_feed::wait_for_order(DWORD ms) {
    WaitForSingleObject(order_changed_.handle(), ms);
}

/// When a frame is due after the first one, in 100 ns.
REFERENCE_TIME camera_feed::offset_of(uint64_t frame) const {
    const double periods = static_cast<double>(frame) / config_.speed;
    return static_cast<REFERENCE_TIME>(periods * static_cast<double>(second * system_.rate_scale) /
                                       static_cast<double>(system_.rate));
}

} // namespace devices
