#include "marvo/recording/record_buffer.h"

namespace recording {

bool RecordBuffer::allocate(unsigned long bytes) {
    memory_ = allocSectors(bytes);
    bytes_ = memory_ ? bytes : 0;
    frameBytes_ = 0;
    return memory_ != nullptr;
}

bool RecordBuffer::setFrameBytes(unsigned long bytes) {
    if (bytes_ < headerBytes || bytes > bytes_ - headerBytes) {
        return false;
    }
    frameBytes_ = bytes;
    return true;
}

} // namespace recording
