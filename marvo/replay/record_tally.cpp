#include "marvo/replay/record_tally.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <utility>

void RecordTally::noteError(std::uint32_t error, const wchar_t* reason) {
    if (status_.firstError != 0) {
        return;
    }
    status_.firstError = error;
    const std::size_t length = std::min(std::wcslen(reason), std::size(status_.firstErrorText) - 1);
    std::wmemcpy(status_.firstErrorText, reason, length);
    status_.firstErrorText[length] = L'\0';
}

void RecordTally::begin() {
    const vcore::spin_guard guard(lock_);
    status_ = {};
    status_.recording = true;
    closed_ = incomplete_ = false;
    failedInSpell_ = lostInSpell_ = 0;
}

void RecordTally::refuse(const wchar_t* reason) {
    const vcore::spin_guard guard(lock_);
    status_ = {};
    closed_ = true;
    noteError(ERROR_CANNOT_MAKE, reason);
}

void RecordTally::take() {
    const vcore::spin_guard guard(lock_);
    status_.taken += closed_ ? 0 : 1;
}

void RecordTally::drop(std::uint64_t frames) {
    const vcore::spin_guard guard(lock_);
    status_.lost += std::min(frames, status_.waiting());
}

void RecordTally::close() {
    const vcore::spin_guard guard(lock_);
    closed_ = true;
}

void RecordTally::end(bool complete) {
    const vcore::spin_guard guard(lock_);
    closed_ = true;
    status_.recording = false;
    status_.complete = complete && !incomplete_;
    status_.lost += status_.waiting();
}

void RecordTally::leaveOut() {
    const vcore::spin_guard guard(lock_);
    ++status_.beyondLimit;
}

std::optional<RecordNews> RecordTally::reach(std::uint64_t number, bool lost, std::uint64_t backlog,
                                             std::uint64_t ring) {
    const vcore::spin_guard guard(lock_);
    if (lost) {
        ++status_.lost;
        ++lostInSpell_;
        if (!status_.behind) {
            status_.behind = true;
            return RecordNews{record_event::overrun, number, lostInSpell_, ERROR_BUSY};
        }
    } else if (status_.behind && backlog < ring / 2) {
        // Not as soon as one frame is there in time: a disk that is as fast as the camera would have every
        // other frame told of.
        status_.behind = false;
        return RecordNews{record_event::caughtUp, number, std::exchange(lostInSpell_, 0), ERROR_SUCCESS};
    }
    return std::nullopt;
}

std::optional<RecordNews> RecordTally::wrote(std::uint64_t number, bool lost) {
    const vcore::spin_guard guard(lock_);
    status_.written += lost ? 0 : 1;
    if (!status_.failing) {
        return std::nullopt;
    }
    status_.failing = false;
    return RecordNews{record_event::recovered, number, std::exchange(failedInSpell_, 0), ERROR_SUCCESS};
}

std::optional<RecordNews> RecordTally::failed(std::uint64_t number, bool lost, std::uint32_t error,
                                              const wchar_t* reason) {
    const vcore::spin_guard guard(lock_);
    status_.failed += lost ? 0 : 1;
    ++failedInSpell_;
    noteError(error, reason);
    if (status_.failing) {
        return std::nullopt;
    }
    status_.failing = true;
    return RecordNews{record_event::failing, number, failedInSpell_, error};
}

std::optional<RecordNews> RecordTally::incomplete(std::uint32_t error, const wchar_t* reason) {
    const vcore::spin_guard guard(lock_);
    noteError(error, reason);
    if (std::exchange(incomplete_, true)) {
        return std::nullopt;
    }
    const std::uint64_t missing = status_.taken - status_.written - status_.beyondLimit;
    return RecordNews{record_event::incomplete, status_.taken, missing, error};
}

void RecordTally::setDriveSpace(std::uint64_t frames) {
    const vcore::spin_guard guard(lock_);
    status_.driveSpace_frames = frames;
}

record_status RecordTally::status() const {
    const vcore::spin_guard guard(lock_);
    return status_;
}
