/// @file
/// The check of an AVI file's indexes.
#pragma once

#include "marvo/avi/avi_findings.h"
#include "marvo/avi/avi_header.h"

/// Compares what a file's indexes and headers say with the chunks that were found in it.
class AviIndexCheck {
public:
    /// Works on `source` with the headers `header` and adds to `findings`; all outlive the object.
    AviIndexCheck(AviSource& source, const AviHeader& header, AviFindings& findings)
        : source_(source), header_(header), findings_(findings) {}

    /// Looks for faults.
    void check();

private:
    void checkPresence();
    void checkCounts();
    void checkCount(unsigned long long offset, const wchar_t* what, std::uint32_t said,
                    unsigned long first) const;
    void checkSuperIndex();
    void checkSuperEntry(unsigned long number, const riff::SuperIndexEntry& entry);
    void checkStandardIndex(const RiffChunk& chunk, std::uint32_t duration);
    void checkLegacyIndex();
    bool isChunk(unsigned long long offset, std::uint32_t size) const;

    AviSource& source_;
    const AviHeader& header_;
    AviFindings& findings_;
    unsigned long named_ = 0;
    unsigned long covered_ = 0;
    unsigned long long behindLast_ =
        0; ///< where the next standard index may stand, so that none is read twice
};
