/// @file
/// Opening files, and nothing but files.
#pragma once

#include "marvo/core/handle.h"

namespace vcore {

/// What `openDiskFile` makes of a name.
enum class DiskFile {
    existing, ///< an existing file is opened
    fresh,    ///< a new file is made; there is none of that name
    emptied,  ///< a new file is made, or an existing one emptied
};

/// Whether a name means a device on this system or a usual one, so that no file can have it everywhere:
/// "CON", "NUL.avi", "\\.\C:", a pipe. Asks no device. False for null.
bool namesDevice(const wchar_t* name);

/// Why no new file may take the place of `name`: 0, or a system error, for the name of a device, for a folder
/// and for a file that is write-protected, which not every system protects.
unsigned long whyNotReplaced(const wchar_t* name);

/// Opens a file of a disk. No device is opened, since some block in that or do what opening means to them.
/// Without a handle the reason is in `GetLastError`; `ERROR_INVALID_NAME` for a device.
handle openDiskFile(const wchar_t* name, DWORD access, DWORD share, DiskFile how = DiskFile::existing,
                    DWORD flags = 0);

} // namespace vcore
