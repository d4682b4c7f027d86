#include "marvo/recording/verification.h"

#include "marvo/core/str.h"
#include "marvo/core/text.h"
#include "marvo/dv/inspection.h"

#include <new>

namespace recording {

namespace {

/// What is wrong with a frame, as a predicate; empty when nothing is.
std::string faultOfFrame(Reader& recording, unsigned long long frame, RecordBuffer& buffer) {
    if (recording.read(frame, buffer)) {
        return vdv::faultOf({buffer.frame(), buffer.frameBytes()});
    }
    const vcore::str reason(recording.error().c_str());
    return std::string("cannot be read") + (reason.len() == 0 ? "" : ": ") + reason.getStr();
}

} // namespace

unsigned long long verify(Reader& recording, unsigned long mostFaults, const Reader::FaultCall& fault,
                          const Reader::ProgressCall& progress) {
    unsigned long long faults = 0;
    const auto tell = [&](unsigned long long offset, const std::string& text) {
        ++faults;
        fault(offset, text);
    };
    bool goOn = true;
    const auto watch = [&](unsigned long long done, unsigned long long all) {
        goOn = goOn && progress(done, all);
        return goOn;
    };
    faults += recording.check(tell, watch, mostFaults);
    RecordBuffer buffer;
    if (goOn && !buffer.allocate(recording.bufferBytes())) {
        throw std::bad_alloc();
    }
    const unsigned long long bytes = recording.fileBytes();
    for (unsigned long long frame = 0; goOn && frame < recording.frames(); ++frame) {
        Reader::Place place;
        recording.place(frame, place);
        const std::string found = faultOfFrame(recording, frame, buffer);
        if (!found.empty()) {
            tell(place.offset, vcore::format("frame %llu %s", frame, found.c_str()));
        }
        watch(place.offset + place.size, bytes);
    }
    if (recording.frames() == 0) {
        tell(0, "there is no whole frame in the file");
    }
    return faults;
}

} // namespace recording
