#include "marvo/recording/read_ahead.h"

namespace recording {

ReadAhead::ReadAhead(Reader& from, unsigned long long first, unsigned long long last)
    : from_(from), first_(first), last_(last), taken_(first) {}

ReadAhead::~ReadAhead() {
    ending_ = true;
    free_.unlock();
    wait(INFINITE);
}

bool ReadAhead::begin(unsigned long bufferBytes, std::wstring& error) {
    for (Slot& slot : slots_) {
        if (!slot.buffer.allocate(bufferBytes)) {
            error = L"there is not enough memory for frames of " + std::to_wstring(bufferBytes) + L" bytes";
            return false;
        }
    }
    if (!start()) {
        error = L"the system gives no thread to read with";
        return false;
    }
    return true;
}

RecordBuffer* ReadAhead::next(std::wstring& error) {
    if (taken_ != first_) {
        free_.unlock();
    }
    filled_.wait(INFINITE);
    Slot& slot = slotOf(taken_++);
    error = slot.error;
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
        slot.error.clear();
        slot.read = from_.read(frame, slot.buffer);
        if (!slot.read) {
            slot.error = from_.error();
        }
        filled_.unlock();
    }
}

} // namespace recording
