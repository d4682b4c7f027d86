#include "marvo/replay/play_filter.h"

#include "marvo/core/timed_guard.h"
#include "marvo/replay/full_path.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// How long the filter lock is waited for: by most calls ...
constexpr unsigned long lockWait_ms = 1000;
/// ... to set the filter up and to end it ...
constexpr unsigned long setUpWait_ms = 500;
/// ... and to change the drain, for a host that has no time.
constexpr unsigned long drainWait_ms = 50;

constexpr unsigned long settle_ms = 5;
constexpr unsigned long join_ms = 100;

/// Live play this far behind the newest frame gains one extra frame per tick ...
constexpr long long catchUpLag = 4;
/// ... and this far behind it jumps.
constexpr long long jumpLag = 25;

/// No speed that makes sense comes near; it keeps the advance of one tick within 64 bits.
constexpr double fastestAdvance_100ns = 1e15;

} // namespace

dvPlayFilter::dvPlayFilter() : dvPacedSource(settle_ms) {
    type_.initDVType(144000, false);
}

dvPlayFilter::~dvPlayFilter() {
    done();
}

bool dvPlayFilter::init(dvFrameStore& store, vvideo::dvMediaType& type) {
    if (type->majortype != GUID_NULL) {
        type_ = type;
    }
    if (type_->majortype == GUID_NULL) {
        return false;
    }
    output_->setType(type_);
    vcore::timed_guard lock(filterLock(), setUpWait_ms);
    store_ = &store;
    prepare();
    inPoint_ = outPoint_ = 0;
    goLive(0);
    return true;
}

bool dvPlayFilter::playinit(unsigned long long in, unsigned long long out, const wchar_t* name, double speed,
                            int delay, unsigned long maxFrames) {
    if (!name || !loadRange(in, out, name, speed, delay, maxFrames)) {
        return false;
    }
    if (!loader_.getType(type_)) {
        return false;
    }
    output_->setType(type_);
    vcore::timed_guard lock(filterLock(), setUpWait_ms);
    prepare();
    paused_ = false;
    startLoadedRange(name, speed);
    return true;
}

/// Makes everything ready for frames of the kept type; until the first one the picture is gray.
void dvPlayFilter::prepare() {
    frameSize_ = type_.frameSize();
    period_100ns_ = type_.timePerFrame();
    display_ = std::make_unique<vvideo::dvFrame>(frameSize_, nullptr);
    display_->fillGray();
    prepareSamples(frameSize_);
    streamTime_100ns_ = 0;
    lastShown_ = ~0ull;
    told_ = {};
}

void dvPlayFilter::goLive(long long position_100ns) {
    speed_ = 1.0;
    paused_ = false;
    replaying_ = false;
    live_ = true;
    position_100ns_ = position_100ns;
    displayStale_ = true;
}

bool dvPlayFilter::live() {
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        goLive(positionOf(static_cast<long long>(newestFrame())));
    }
    // The picture does not wait for a disk that holds the loader up.
    loader_.done();
    return true;
}

bool dvPlayFilter::reset() {
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        goLive(0);
    }
    loader_.done();
    return true;
}

bool dvPlayFilter::play(unsigned long long in, unsigned long long out, const wchar_t* name, double speed,
                        int delay, unsigned long maxFrames) {
    if (!std::isfinite(speed)) {
        return false;
    }
    dvFrameStore* const store = attachedStore();
    if (!name && !store) {
        return false;
    }
    vcore::str file;
    file = name ? name : store->fileName();
    if (in > out) {
        std::swap(in, out);
    }
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        if (in == inPoint_ && out == outPoint_ && loader_.loaded(file.oleStr(), in, out)) {
            startRange(speed);
            return true;
        }
    }
    if (store) {
        store->fileFlush();
    }
    if (!loadRange(in, out, file.oleStr(), speed, delay, maxFrames)) {
        return false;
    }
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    startLoadedRange(file.oleStr(), speed);
    return true;
}

dvFrameStore* dvPlayFilter::attachedStore() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return store_;
}

/// Has the loader read the range ahead, in the direction of `speed`, for `delay` ms.
bool dvPlayFilter::loadRange(unsigned long long in, unsigned long long out, const wchar_t* name, double speed,
                             int delay, unsigned long maxFrames) {
    loader_.setSpeed(speed);
    if (!loader_.init(name, in, out, maxFrames)) {
        loader_.setSpeed(this->speed());
        return false;
    }
    Sleep(static_cast<DWORD>(std::clamp(delay, 0, longestPlayDelay_ms)));
    return true;
}

void dvPlayFilter::startRange(double speed) {
    position_100ns_ = positionOf(static_cast<long long>(inPoint_));
    speed_ = speed;
    replaying_ = true;
    live_ = false;
    displayStale_ = true;
}

void dvPlayFilter::startLoadedRange(const wchar_t* name, double speed) {
    replayFile_ = fullPath(name);
    inPoint_ = loader_.inPoint();
    outPoint_ = loader_.outPoint();
    startRange(speed);
}

void dvPlayFilter::seekFrame(long long frame) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    if (replaying_ && rangeLength() > 0) {
        frame = wrapIntoRange(frame);
        loader_.expect(static_cast<unsigned long long>(frame));
    }
    position_100ns_ = positionOf(frame);
}

bool dvPlayFilter::setPause(bool paused) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    paused_ = paused;
    return true;
}

bool dvPlayFilter::setSpeed(double speed) {
    if (!std::isfinite(speed)) {
        return false;
    }
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    speed_ = speed;
    loader_.setSpeed(speed);
    return true;
}

void dvPlayFilter::setRecording(bool recording) {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    recording_ = recording;
}

void dvPlayFilter::setBreaker(unsigned long ms) {
    loader_.setBreaker(ms);
}

unsigned long dvPlayFilter::breaker() const {
    return loader_.breaker();
}

HWND dvPlayFilter::setInfoDrain(HWND window, unsigned int message, play_info* info) {
    vcore::timed_guard lock(filterLock(), drainWait_ms);
    infoMessage_ = message;
    info_ = info;
    return std::exchange(infoWindow_, window);
}

play_state dvPlayFilter::state() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    const auto due = static_cast<std::uint64_t>(period_100ns_ != 0 ? position_100ns_ / period_100ns_ : 0);
    return {{lastShown_, inPoint_, outPoint_, newestFrame(), replaying_, recording_}, paused_, speed_, due};
}

long long dvPlayFilter::period() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return period_100ns_;
}

long long dvPlayFilter::frame() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return period_100ns_ != 0 ? position_100ns_ / period_100ns_ : 0;
}

bool dvPlayFilter::paused() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return paused_;
}

bool dvPlayFilter::playing() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return !live_;
}

bool dvPlayFilter::recording() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return recording_;
}

play_error dvPlayFilter::unreadable() const {
    return loader_.unreadable();
}

vcore::str dvPlayFilter::replayFile() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return replayFile_;
}

double dvPlayFilter::speed() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return speed_;
}

unsigned long long dvPlayFilter::playedFrame() const {
    vcore::timed_guard lock(filterLock(), lockWait_ms);
    return lastShown_;
}

void dvPlayFilter::done() {
    stopDelivery(join_ms);
    {
        vcore::timed_guard lock(filterLock(), setUpWait_ms);
        period_100ns_ = 0;
        frameSize_ = 0;
        loader_.done();
        allocator_.done();
        store_ = nullptr;
        display_.reset();
        recording_ = false;
    }
    _initSync();
}

unsigned long long dvPlayFilter::newestFrame() const {
    return store_ ? store_->lastFrame() : 0;
}

/// The position of a frame in 100 ns; for absurd frame numbers it wraps instead of overflowing.
long long dvPlayFilter::positionOf(long long frame) const {
    return static_cast<long long>(static_cast<unsigned long long>(frame) *
                                  static_cast<unsigned long long>(period_100ns_));
}

long long dvPlayFilter::rangeLength() const {
    return static_cast<long long>(outPoint_ - inPoint_ + 1);
}

long long dvPlayFilter::wrapIntoRange(long long frame) const {
    const long long length = rangeLength();
    const auto first = static_cast<long long>(inPoint_);
    const auto offset = static_cast<long long>(static_cast<unsigned long long>(frame) - inPoint_);
    return (offset % length + length) % length + first;
}

dvPlayFilter::Tick dvPlayFilter::dueTick() {
    const unsigned long long newest = newestFrame();
    Tick tick;
    tick.start = streamTime_100ns_;
    tick.stop = tick.start + period_100ns_;
    streamTime_100ns_ = tick.stop;
    tick.frame = period_100ns_ != 0 ? position_100ns_ / period_100ns_ : 0;
    if (replaying_ && inPoint_ <= outPoint_ && rangeLength() > 0) {
        tick.frame = wrapIntoRange(tick.frame);
    }
    const auto edge = static_cast<long long>(newest);
    if (live_ && !paused_ && edge > tick.frame + catchUpLag) {
        tick.frame = edge > tick.frame + jumpLag ? edge : tick.frame + 1;
        position_100ns_ = positionOf(tick.frame);
    }
    postInfo(tick.frame, newest);
    return tick;
}

void dvPlayFilter::postInfo(long long frame, unsigned long long newest) {
    if (!infoWindow_ || !info_) {
        return;
    }
    *info_ =
        play_info(static_cast<std::uint64_t>(frame), inPoint_, outPoint_, newest, replaying_, recording_);
    PostMessageA(infoWindow_, infoMessage_, static_cast<WPARAM>(static_cast<std::uint32_t>(frame)),
                 reinterpret_cast<LPARAM>(info_));
}

bool dvPlayFilter::fetchInto(vvideo::dvFrame* frame, unsigned long long number) {
    if (live_) {
        return store_ && store_->get(frame, number);
    }
    return (store_ && store_->get(frame, number, replayFile_.oleStr())) || loader_.get(frame, number);
}

/// Whether "playError" has something new to tell, which `told_` is then.
bool dvPlayFilter::noteErrors() {
    const play_error now = replaying_ ? loader_.unreadable() : play_error{};
    if (now == told_ || (now.frames == 0 && told_.frames == 0)) {
        return false;
    }
    told_ = now.frames != 0 ? now : play_error{told_.first, 0, 0};
    return true;
}

void dvPlayFilter::faultChanged(unsigned long fault, bool begun) {
    emitSignal(L"playFault", 8, static_cast<std::uint32_t>(fault), static_cast<std::uint32_t>(begun));
}

void dvPlayFilter::fetch(long long frame) {
    const auto number = static_cast<unsigned long long>(frame);
    if ((displayStale_ || number != lastShown_) && !fetchInto(display_.get(), number)) {
        return;
    }
    if (!paused_) {
        advance();
    }
    displayStale_ = false;
    lastShown_ = number;
}

void dvPlayFilter::advance() {
    const double step =
        std::clamp(static_cast<double>(period_100ns_) * speed_, -fastestAdvance_100ns, fastestAdvance_100ns);
    position_100ns_ = static_cast<long long>(static_cast<unsigned long long>(position_100ns_) +
                                             static_cast<unsigned long long>(static_cast<long long>(step)));
}

IMediaSample* dvPlayFilter::nextSample() {
    Tick tick;
    play_error error;
    bool changed = false;
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        tick = dueTick();
        fetch(tick.frame);
        changed = noteErrors();
        error = told_;
    }
    emitSignal(L"playTime", 0);
    if (changed) {
        emitSignal(L"playError", 20, error.first, error.frames, error.error);
    }
    IMediaSample* sample = takeSample();
    if (!sample) {
        return nullptr;
    }
    {
        vcore::timed_guard lock(filterLock(), lockWait_ms);
        if (display_) {
            display_->copyTo(sample);
        }
    }
    markSample(sample, tick.start, tick.stop, tick.start == 0);
    return sample;
}
