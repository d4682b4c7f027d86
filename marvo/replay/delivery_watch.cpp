#include "marvo/replay/delivery_watch.h"

#include <utility>

namespace {

/// What lasts shorter than this is an ordinary hitch.
constexpr ULONGLONG patience_ms = 1000;

} // namespace

DeliveryWatch::Change DeliveryWatch::enter() {
    noTickSince_ms_ = refusedSince_ms_ = 0;
    leave();
    return {0, std::exchange(told_, 0ul)};
}

void DeliveryWatch::leave() {
    handedOver_ms_ = 0;
    faults_ = 0;
}

DeliveryWatch::Change DeliveryWatch::step(play_fault fault, ULONGLONG& since_ms, bool good) {
    const bool on = (faults_ & fault) != 0;
    if (good) {
        since_ms = 0;
        faults_ &= ~fault;
        told_ &= ~fault;
        return on ? Change{0, fault} : Change{};
    }
    const ULONGLONG now = GetTickCount64();
    since_ms = since_ms != 0 ? since_ms : now;
    if (on || now - since_ms < patience_ms) {
        return {};
    }
    faults_ |= fault;
    told_ |= fault;
    return {fault, 0};
}

DeliveryWatch::Change DeliveryWatch::waited(bool ticked) {
    return step(play_no_ticks, noTickSince_ms_, ticked);
}

DeliveryWatch::Change DeliveryWatch::handedOver(bool taken) {
    handedOver_ms_ = 0;
    return step(play_refused, refusedSince_ms_, taken);
}

unsigned long DeliveryWatch::faults() const {
    const ULONGLONG since_ms = handedOver_ms_;
    const bool heldUp = since_ms != 0 && GetTickCount64() - since_ms >= patience_ms;
    return faults_ | (heldUp ? play_held_up : 0ul);
}
