/// @file
/// The check of an AVI file's chunks.
#pragma once

#include "marvo/avi/avi_findings.h"
#include "marvo/avi/avi_header.h"

/// Walks a whole file and looks whether it is legal RIFF: chunks within their lists, lists within theirs,
/// pieces one behind the other up to the end of the file, frames of the right size that are DV frames.
class AviStructureCheck {
public:
    /// Works on `source` with the headers `header` and adds to `findings`; all outlive the object.
    AviStructureCheck(AviSource& source, AviHeader& header, AviFindings& findings,
                      const AviInspector::Options& options)
        : source_(source), header_(header), findings_(findings), options_(options) {}

    /// Walks the file. False when it was ended early.
    bool walk();

private:
    struct OpenList {
        unsigned long long end = 0; ///< without padding
        bool overrun = false;
    };

    void leaveLists(unsigned long long offset);
    void takeChunk(const RiffChunk& chunk);
    void takePiece(const RiffChunk& chunk);
    void checkLevel(const RiffChunk& chunk);
    bool enterList(const RiffChunk& chunk);
    void takeFrame(const RiffChunk& chunk);
    void checkFrameData(const RiffChunk& chunk);
    bool resume(RiffWalker& walker, RiffWalker::Step step);
    unsigned long long nextFrame(unsigned long long begin);

    AviSource& source_;
    AviHeader& header_;
    AviFindings& findings_;
    const AviInspector::Options& options_;
    std::vector<OpenList> lists_;
    bool behindPiece_ = false;
    /// The search done last: its start and what it found, so that no part of a file is searched twice.
    unsigned long long searchedFrom_ = ~0ull;
    unsigned long long nextFrame_ = 0;
    unsigned long expectedSize_ = 0;
    std::vector<unsigned char> frame_;
};
