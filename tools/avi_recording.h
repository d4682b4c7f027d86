/// @file
/// AVI files.
#pragma once

#include "tools/recording.h"

#include "marvo.h"

namespace dvrec {

/// The DV video stream of an AVI file, of this engine or another writer.
class AviRecording final : public Recording {
public:
    /// Throws the `Failure` when the file has no DV video that can be read.
    AviRecording(InputFile file, FileIOAVI::Trust trust);

    Kind kind() const override { return Kind::avi; }
    unsigned long frames() const override { return avi_.frames(); }
    Place place(unsigned long frame) const override;
    bool read(unsigned long frame, Slot& slot, std::string& fault) override;

    /// What is known of the file's structure.
    const FileIOAVI& avi() const { return avi_; }

private:
    FileIOAVI avi_;
};

} // namespace dvrec
