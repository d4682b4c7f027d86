/// @file
/// The files that settings are read from.
#pragma once

#include "marvo/core/inifile.h"
#include "marvo/frontend/log.h"
#include "marvo/frontend/settings.h"

namespace frontend {

/// "marvo.ini", "dv.ini" and "video.ini" in the current directory, read at construction and never written. A
/// missing file has no keys; the front end has no keys in "marvo.ini".
class SettingsFiles {
public:
    SettingsFiles();
    /// Puts the value of every key of the setting table that the files define into `settings`, which
    /// otherwise stay as they are. Numbers outside of their ranges are told to `log`.
    void readInto(Settings& settings, Log& log) const;

private:
    const vcore::iniFile& fileOf(const wchar_t* key) const;

    vcore::iniFile marvo_;
    vcore::iniFile dv_;
    vcore::iniFile video_;
};

} // namespace frontend
