/// @file
/// The settings of the application and their file.
#pragma once

#include "app/disk.h"
#include "app/key_map.h"
#include "app/text.h"

#include <string>
#include <vector>

namespace app {

/// What the operator can set. The defaults are a working application.
struct Settings {
    std::wstring camera;   ///< by its name; empty: the first one
    std::wstring folder;   ///< of the recordings; empty: "recordings" beside the settings file
    bool raw = false;      ///< recordings are raw files (.raw), not .avi
    int delay_ms = 0;      ///< between choosing a replay and its start, 0 to 60000
    int ring_frames = 250; ///< frames in memory, 25 to 2000
    bool deinterlace = true;
    Language language = Language::english;
    int outputMonitor = 0;  ///< for the clean picture, counted from 1; 0: not the one of the window
    int rolling_min = 10;   ///< minutes that are always there before Record, 1 to 240
    bool backToLive = true; ///< at the end of "once"
    bool mute = true;
    int port = 0;       ///< of the remote hands, 1024 to 65535; 0: off
    std::wstring token; ///< what they have to send first; the port stays closed without it
    KeyMap keys;
    std::vector<std::wstring> recent; ///< files opened last, the newest first, at most ten
    /// Lines of the file that mean nothing; they are kept.
    std::vector<std::string> kept;

    /// Notes that a file was opened.
    void addRecent(const std::wstring& file);
};

/// The file "marvo-replay.ini".
class SettingsFile {
public:
    /// Reads a file's text over the defaults. Everything that makes no sense is named in `findings` with its
    /// line, and the default is taken.
    static Settings parse(const std::string& text, std::vector<std::wstring>& findings);
    /// The text of a file with these settings.
    static std::string format(const Settings& settings);

    /// The same with a file; no file is the defaults. One that cannot be read is a finding.
    static Settings read(Disk& disk, const std::wstring& file, std::vector<std::wstring>& findings);
    /// Replaces the file; false with the reason in `why`.
    static bool write(Disk& disk, const std::wstring& file, const Settings& settings, std::wstring& why);
};

} // namespace app
