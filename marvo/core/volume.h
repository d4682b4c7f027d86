/// @file
/// What the library needs to know of a volume.
#pragma once

#include "marvo/core/windows.h"

/// Bytes per sector of the volume that holds the file `name` (of the current drive when the name has none); 0
/// when the system cannot tell.
unsigned long bytesPerSector(const wchar_t* name);

/// Bytes that this user may still write on the volume of an open file; all ones when the system does not
/// tell. As slow as the disk is. It takes no memory, so a thread may be killed in it.
unsigned long long freeBytesBeside(HANDLE file);
