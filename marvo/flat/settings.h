/// @file
/// The settings by their names.
#pragma once

#include "marvo_c.h"

#include <span>
#include <string>

namespace flat {

/// A setting with the ways to its value, which are taken within a command. A flag or number has the first two
/// (the other two are null), a text the others.
struct Setting {
    const char* name;
    marvo_setting_type type;
    marvo_i64 least; ///< of a number
    marvo_i64 most;
    const char* meaning;
    marvo_i64 (*number)();
    void (*setNumber)(marvo_i64 value);
    std::wstring (*text)();
    void (*setText)(const wchar_t* value);
};

/// All of them. Those that files can set have their range and meaning from the front end's table.
std::span<const Setting> settings();

} // namespace flat
