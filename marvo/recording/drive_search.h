/// @file
/// The search for the drive to record on.
#pragma once

#include "marvo/core/str.h"

/// Finds the drive to record on. The questions to the system are virtual, so that the choice can be tested
/// without real drives.
class MARVO_API dvDriveSearch {
public:
    /// Whether a drive with that many bytes will do: more than 1,080,000,000, which is five minutes of 625/50
    /// video (7,500 frames of 144,000 bytes).
    static bool enough(unsigned long long bytes);

    virtual ~dvDriveSearch();

    /// Looks at the drives from Z down to A and puts the root of the fixed one with the most room (as "D:\")
    /// into `root`; of equal ones the letter nearer Z. The result is its room in bytes, 0 when there is none,
    /// and `root` is then unchanged. `file` is the name of the recording: an existing one counts as room,
    /// since it will be overwritten.
    unsigned long long best(vcore::str& root, const wchar_t* file) const;

protected:
    /// Whether `root` is a fixed disk of this machine.
    virtual bool isFixed(const wchar_t* root) const;

    /// Free bytes on the drive; 0 when the system does not tell.
    virtual unsigned long long freeBytes(const wchar_t* root) const;

    /// Length of a file in bytes; 0 when it cannot be opened.
    virtual unsigned long long fileLength(const wchar_t* name) const;
};
