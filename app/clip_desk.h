/// @file
/// The clips of a reel, and their files.
#pragma once

#include "app/clip_file.h"
#include "app/clips.h"
#include "app/disk.h"
#include "app/reel.h"
#include "app/text.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// Keeps the clip list of a reel in the clip files beside its recordings: after every change each file whose
/// clips have changed is replaced. What could not be written is tried again.
class ClipDesk {
public:
    /// `disk` outlives this object.
    explicit ClipDesk(Disk& disk) : disk_(disk) {}

    /// The clips of an opened recording instead of what was there; what is wrong with its list is returned in
    /// words. A list that is refused is never written over.
    std::vector<std::wstring> load(const Segment& recording, Language language);
    /// Makes clips of a part of a reel, one for each file that it lies in; how many.
    int add(const Reel& reel, FrameSpan places, Language language);
    /// Brings the files up to date. False when one could not be written.
    bool save();

    /// The list; after a change call `save`.
    ClipList list;
    /// The start of a clip that is being marked.
    std::optional<std::uint64_t> markIn;

    /// The recording whose clips are not saved, and why; empty: all are.
    const std::wstring& unsavedFile() const { return unsavedFile_; }
    const std::wstring& whyUnsaved() const { return whyUnsaved_; }

private:
    struct File {
        std::wstring recording;
        std::string written; ///< what its clip file holds, as `ClipFile::format` has it; empty: there is none
        std::vector<std::string> kept;
        std::wstring refused; ///< why it is not to be written; empty: it may be
    };
    File& fileOf(const std::wstring& recording);

    Disk& disk_;
    std::vector<File> files_;
    std::wstring unsavedFile_;
    std::wstring whyUnsaved_;
};

} // namespace app
