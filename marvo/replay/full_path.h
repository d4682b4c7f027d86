/// @file
/// Names of files that can be compared.
#pragma once

#include "marvo/core/str.h"

/// The full path of `name`, seen from the current directory of this moment; empty for null and for a name
/// that the system cannot make sense of.
vcore::str fullPath(const wchar_t* name);
