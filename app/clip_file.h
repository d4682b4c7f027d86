/// @file
/// The clips of a recording in a small text file beside it.
#pragma once

#include "app/clips.h"
#include "app/disk.h"
#include "app/text.h"

#include <string>
#include <vector>

namespace app {

/// What became of reading a clip file.
struct ClipFileContent {
    std::vector<Clip> clips;
    std::vector<std::string> kept;      ///< lines that are no clips; they are written again as they were
    std::vector<std::wstring> findings; ///< what is wrong, by line, in words
    bool refused = false;               ///< it is another recording's, or cannot be read: not to be replaced
};

/// The text file `NAME.avi.clips` beside the recording `NAME.avi`: a line that names the recording, then one
/// line for each clip (first frame, last frame, time of day, name), in UTF-8, readable by people.
class ClipFile {
public:
    /// The clip file of a recording.
    static std::wstring nameFor(const std::wstring& recording) { return recording + L".clips"; }

    /// A clip's name as a part of a file's name: what the system does not take there becomes "_".
    static std::wstring fileWord(const std::wstring& clipName);

    /// Reads the clips of `recording`; no file is no clips.
    static ClipFileContent read(Disk& disk, const std::wstring& recording, Language language);
    /// Replaces the clip file; without clips and kept lines it is deleted. False with the reason in `why`.
    static bool write(Disk& disk, const std::wstring& recording, const std::vector<Clip>& clips,
                      const std::vector<std::string>& kept, std::wstring& why);

    /// The same as text; for `read` and `write`, and dvrec-like tools.
    static ClipFileContent parse(const std::string& text, const std::wstring& recording, Language language);
    static std::string format(const std::wstring& recording, const std::vector<Clip>& clips,
                              const std::vector<std::string>& kept);
};

} // namespace app
