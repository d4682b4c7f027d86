#include "marvo/recording/plain_reader.h"

#include "marvo/core/text.h"

namespace recording {

bool PlainReader::place(unsigned long long frame, Place& place) const {
    place = {offset(frame) + bytesInFront(), frameSize()};
    return frame < frames();
}

unsigned long long PlainReader::tail() const {
    const unsigned long long bytes = fileBytes();
    const unsigned long long whole = offset(frames());
    return bytes > whole ? bytes - whole : 0;
}

unsigned long long PlainReader::check(const FaultCall& fault, const ProgressCall&,
                                      unsigned long mostFaults) const {
    if (tail() == 0) {
        return 0;
    }
    if (mostFaults == 0) {
        return 1;
    }
    fault(offset(frames()),
          "the file is cut off: it ends with " + vcore::counted(tail(), "byte") + " that are no whole frame");
    return 0;
}

std::string PlainReader::whatIsMissing() const {
    return tail() > 0 ? vcore::counted(tail(), "byte") + " behind the last whole frame" : std::string();
}

} // namespace recording
