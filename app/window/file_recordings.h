/// @file
/// Looks into files of recordings for the session.
#pragma once

#include "app/recordings.h"
#include "marvo.h"

namespace app {

/// Recordings by the engine's reader. The file that was asked for last stays open for a while.
class FileRecordings final : public Recordings {
public:
    std::optional<RecordingFacts> look(const std::wstring& file, std::wstring& why) override;
    std::wstring timeCode(const std::wstring& file, std::uint64_t frame) override;
    /// Closes the file, so that it can be deleted.
    void close() { recording_.close(); }

private:
    dvRecording recording_;
};

} // namespace app
