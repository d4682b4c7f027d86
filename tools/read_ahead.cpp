#include "tools/read_ahead.h"

#include "tools/failure.h"
#include "tools/recording.h"

namespace dvrec {

ReadAhead::ReadAhead(recording::Reader& from, unsigned long long first, unsigned long long last,
                     unsigned long bufferBytes)
    : from_(from), first_(first), last_(last), taken_(first) {
    for (Slot& slot : slots_) {
        allocate(slot.buffer, bufferBytes);
    }
    if (!start()) {
        throw Failure{ExitStatus::cannotRead, "The system gives no thread to read with."};
    }
}

ReadAhead::~ReadAhead() {
    ending_ = true;
    free_.unlock();
    wait(INFINITE);
}

recording::RecordBuffer* ReadAhead::next(std::string& fault) {
    if (taken_ != first_) {
        free_.unlock();
    }
    filled_.wait(INFINITE);
    Slot& slot = slotOf(taken_++);
    fault = slot.fault;
    return slot.read ? &slot.buffer : nullptr;
}

void ReadAhead::run() {
    const uninterruptible whole;
    for (unsigned long long frame = first_; frame <= last_; ++frame) {
        free_.wait(INFINITE);
        if (ending_) {
            return;
        }
        Slot& slot = slotOf(frame);
        slot.fault.clear();
        slot.read = readFrame(from_, frame, slot.buffer, slot.fault);
        filled_.unlock();
    }
}

} // namespace dvrec
