/// @file
/// Frames of a recording, read on a thread of their own.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/winthread.h"
#include "marvo/recording/reader.h"
#include "marvo/recording/record_buffer.h"

#include <array>
#include <atomic>
#include <string>

namespace recording {

/// Reads frames while those before them are being written, so that a copy takes as long as the slower of the
/// two. The recording belongs to this object's thread for as long as it lives.
class ReadAhead : private vwin::winthread {
public:
    /// For the frames `first` to `last`, both included.
    ReadAhead(Reader& from, unsigned long long first, unsigned long long last);
    ~ReadAhead();

    /// Begins to read into buffers of `bufferBytes`. False, with the reason in `error`, when there is no
    /// memory or no thread.
    bool begin(unsigned long bufferBytes, std::wstring& error);

    /// The next frame, which may be overwritten and is kept until the next call; null, with the reason in
    /// `error`, when it cannot be read. To be called at most once for each frame, after `begin`.
    RecordBuffer* next(std::wstring& error);

private:
    static constexpr int buffers = 4;

    struct Slot {
        RecordBuffer buffer;
        bool read = false;
        std::wstring error;
    };

    void run() override;
    Slot& slotOf(unsigned long long frame) { return slots_[frame % buffers]; }

    Reader& from_;
    const unsigned long long first_, last_;
    unsigned long long taken_; ///< the frame that `next` gives next
    std::array<Slot, buffers> slots_;
    vcore::semaphore free_{buffers, buffers};
    vcore::semaphore filled_{buffers, 0};
    std::atomic<bool> ending_ = false;
};

} // namespace recording
