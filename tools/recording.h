/// @file
/// A recording that is read, of whatever kind.
#pragma once

#include "tools/dv_frame.h"
#include "tools/input_file.h"
#include "tools/slot.h"

#include <memory>
#include <string>

namespace dvrec {

/// The kinds of recording.
enum class Kind {
    raw,    ///< the engine's own records, one per frame
    avi,    ///< AVI with a DV video stream
    stream, ///< DV frames one behind the other and nothing else
};

/// The kind in words, and as one word for programs.
const char* describe(Kind kind);
const char* identifier(Kind kind);

/// The frames of a file, by number. One thread.
class Recording {
public:
    /// Where a frame's own bytes stand in the file.
    struct Place {
        unsigned long long offset = 0;
        unsigned long size = 0;
    };

    virtual ~Recording() = default;
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    virtual Kind kind() const = 0;
    /// Frames that are there as a whole.
    virtual unsigned long frames() const = 0;
    /// Where frame `frame` stands, which is less than `frames`.
    virtual Place place(unsigned long frame) const = 0;
    /// Reads frame `frame` into the slot. False, with the reason in `fault`, when it is not there as a whole.
    virtual bool read(unsigned long frame, Slot& slot, std::string& fault);

    /// Reads what fits into `to` from the begin of frame `frame`; what was read of it.
    FrameBytes readHead(unsigned long frame, std::span<unsigned char> to) const;
    /// Bytes of the first frame; 0 without frames.
    unsigned long frameSize() const { return frames() > 0 ? place(0).size : 0; }
    const InputFile& file() const { return file_; }

protected:
    explicit Recording(InputFile file) : file_(std::move(file)) {}

private:
    InputFile file_;
};

/// Bytes of the frame that begins at `offset`, of 25 or 50 Mbit/s, as its own header says.
unsigned long frameSizeAt(const InputFile& file, unsigned long long offset);

/// Opens a recording. `sector` is that of the volume on which a raw recording was made, 0 to find out. Throws
/// the `Failure` when the file cannot be opened, is empty or is none of the kinds.
std::unique_ptr<Recording> openRecording(const std::wstring& name, unsigned long sector);

} // namespace dvrec
