/// @file
/// The settings that files can set. docs/settings.md shows the same rows; a test compares the two.
#pragma once

#include "marvo/frontend/settings.h"

#include <variant>

namespace frontend {

/// One key. The part in front of its dot is also the name of its file: "dv.input" stands in "dv.ini". The
/// type of the value is that of the member it sets; the default is the member's. A number outside of its
/// range is replaced by the end of the range that is nearer, which the log tells.
struct SettingRow {
    const wchar_t* key;
    std::variant<bool Settings::*, int Settings::*, vcore::str Settings::*,
                 std::optional<unsigned long> Settings::*>
        target;          ///< what the value is put into
    const char* meaning; ///< one line for the documentation
    long long least = 0; ///< for numbers: the range
    long long most = 0;
};

/// All of them, in the order in which they are read. A new setting is a member of `Settings`, a row here and
/// a row in docs/settings.md.
inline constexpr SettingRow settingTable[] = {
    {L"dv.control", &Settings::control, "whether `call` interprets markers"},
    {L"dv.logging", &Settings::logging, "whether suppressible log lines are written"},
    {L"dv.maxfilesize", &Settings::maxFilesize_frames,
     "frames with this number and above are not written to the file, as with `setMaxFilesize`; -1: no limit",
     -1, 0xFFFFFFFF},
    {L"dv.playdelay", &Settings::playDelay_ms,
     "milliseconds between loading and starting a replay, as with `setPlayDelay`", 0, 60000},
    {L"dv.input", &Settings::input, "number of the capture device, as with `setInput`", 0, 255},
    {L"dv.reconnect", &Settings::reconnect,
     "whether a camera that was gone is taken up again by itself, as with `setReconnect`"},
    {L"dv.file", &Settings::recFile,
     "file for recording and replay; temp.dv means: on the fixed drive with the most free space"},
    {L"video.deinterlace", &Settings::deinterlace,
     "whether the mixing renderer is used and asked to deinterlace, as with `setDeinterlace`"},
    {L"video.filter", &Settings::videoFilter,
     "1: deinterlacing is switched off for every stream once the renderer is made", -0x80000000ll,
     0x7FFFFFFF},
};

} // namespace frontend
