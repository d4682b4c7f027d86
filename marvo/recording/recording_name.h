/// @file
/// Which names mean an AVI recording.
#pragma once

#include "marvo/core/str.h"

/// Whether a recording of this name is an AVI file: ".avi" in any letter case, anywhere behind the first
/// character. A name that begins with ".avi" means a raw recording.
inline bool namesAviRecording(const wchar_t* name) {
    vcore::str lower;
    lower = name;
    lower.lower();
    return lower.findStr(L".avi", 0) > 0;
}
