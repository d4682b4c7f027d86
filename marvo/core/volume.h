/// @file
/// What the library needs to know of a volume.
#pragma once

/// Bytes per sector of the volume that holds the file `name` (of the current drive when the name has none); 0
/// when the system cannot tell.
unsigned long bytesPerSector(const wchar_t* name);
