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

namespace dvrec {

/// Reads frames while those before them are being written, so that a copy takes as long as the slower of the
/// two. The recording belongs to this object's thread for as long as it lives.
class ReadAhead : private vwin::winthread {
public:
    /// Reads the frames `first` to `last`, both included, into buffers of `bufferBytes`. Throws the `Failure`
    /// when there is no memory or no thread.
    ReadAhead(recording::Reader& from, unsigned long long first, unsigned long long last,
              unsigned long bufferBytes);
    ~ReadAhead();

    /// The next frame, which may be overwritten and is kept until the next call; null, with the reason in
    /// `fault`, when it cannot be read. To be called once for each frame.
    recording::RecordBuffer* next(std::string& fault);

private:
    static constexpr int buffers = 4;

    struct Slot {
        recording::RecordBuffer buffer;
        bool read = false;
        std::string fault;
    };

    void run() override;
    Slot& slotOf(unsigned long long frame) { return slots_[frame % buffers]; }

    recording::Reader& from_;
    const unsigned long long first_, last_;
    unsigned long long taken_; ///< the frame that `next` gives next
    std::array<Slot, buffers> slots_;
    vcore::semaphore free_{buffers, buffers};
    vcore::semaphore filled_{buffers, 0};
    std::atomic<bool> ending_ = false;
};

} // namespace dvrec
