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
    /// The sides of the picture of a file's frame, width to height.
    dvAspect aspect(const std::wstring& file, std::uint64_t frame);

private:
    bool open(const std::wstring& file);

    dvRecording recording_;
};

} // namespace app
