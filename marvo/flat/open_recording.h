/// @file
/// A recording that is read, by number.
#pragma once

#include "marvo/flat/frame_notes.h"
#include "marvo/recording/reader.h"
#include "marvo_c.h"

#include <memory>
#include <string>

namespace flat {

/// One open recording. One thread at a time.
class OpenRecording {
public:
    /// Opens it. Throws as `failOpening`.
    explicit OpenRecording(std::wstring name);

    /// Looks for frames written since. Throws MARVO_E_FILE when that fails.
    void refresh();
    /// Frame `number`, in memory that the next call uses again. Throws MARVO_E_RANGE and MARVO_E_FILE.
    vdv::FrameBytes read(unsigned long long number);
    /// Fills in what is known of it.
    void describe(marvo_recording_info& info) const;
    /// Its reader.
    recording::Reader& reader() const { return *reader_; }

private:
    static std::unique_ptr<recording::Reader> open(const std::wstring& name);

    const std::wstring name_;
    std::unique_ptr<recording::Reader> reader_;
    recording::RecordBuffer buffer_;
};

/// The number of a kind.
marvo_kind kindOf(recording::Kind kind);

} // namespace flat
