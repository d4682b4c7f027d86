#include "tools/slot.h"

#include "tools/failure.h"

namespace dvrec {

void Slot::prepare(unsigned long size) {
    constexpr unsigned long largestPadding = 0x20000;
    const unsigned long needed = static_cast<unsigned long>(headerBytes) + size + largestPadding;
    if (memory_.size() < needed && !memory_.init(needed)) {
        throw Failure{ExitStatus::cannotRead, "There is not enough memory for a frame of " +
                                                  std::to_string(size) +
                                                  " bytes; the recording is probably damaged."};
    }
    size_ = size;
}

} // namespace dvrec
