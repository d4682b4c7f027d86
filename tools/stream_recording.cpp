#include "tools/stream_recording.h"

#include <algorithm>
#include <array>

namespace dvrec {

StreamRecording::StreamRecording(InputFile source) : Recording(std::move(source)) {
    size_ = frameSizeAt(file(), 0);
    constexpr unsigned long long mostFrames = 0xFFFFFFFF;
    frames_ = static_cast<unsigned long>(std::min(file().size() / size_, mostFrames));
}

} // namespace dvrec
