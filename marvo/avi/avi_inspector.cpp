#include "marvo/avi/avi_inspector.h"

#include "marvo/avi/avi_index_check.h"
#include "marvo/avi/avi_structure_check.h"

#include <algorithm>
#include <new>

namespace {

/// Chunk headers lie far from each other.
constexpr unsigned long readAhead = 0x200;

void inspect(AviSource& source, const AviInspector::Options& options, AviFindings& findings) {
    source.readAhead(readAhead);
    AviHeader header;
    if (const wchar_t* fault = header.read(source)) {
        findings.fault(0, L"%ls", fault);
    }
    if (!header.hasVideo) {
        findings.fault(0, header.interleaved ? L"the DV is interleaved (type 1), there is no video stream"
                                             : L"there is no DV video stream");
    }
    if (AviStructureCheck(source, header, findings, options).walk() && header.hasVideo) {
        AviIndexCheck(source, header, findings).check();
    }
}

} // namespace

bool AviInspector::run(const wchar_t* name, const Options& options) {
    faults_.clear();
    pieces_.clear();
    faultCount_ = frames_ = 0;
    AviFindings findings;
    findings.maxFaults = options.maxFaults;
    AviSource source;
    const bool opened = name && source.open(name);
    if (!opened) {
        findings.fault(0, L"the file cannot be opened (system error %lu)", GetLastError());
    } else {
        try {
            inspect(source, options, findings);
        } catch (const std::bad_alloc&) {
            findings.fault(0, L"there is not enough memory to inspect the file");
        }
    }
    const auto inFront = [](const Fault& a, const Fault& b) { return a.offset < b.offset; };
    std::stable_sort(findings.faults.begin(), findings.faults.end(), inFront);
    faults_ = std::move(findings.faults);
    faultCount_ = findings.faultCount;
    pieces_ = std::move(findings.pieces);
    frames_ = findings.frames;
    return opened;
}
