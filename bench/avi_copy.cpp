#include "bench/avi_copy.h"

#include "bench/frame_buffers.h"
#include "bench/stopwatch.h"

#include <stdexcept>

double copyStream_s(const wchar_t* stream, const wchar_t* avi) {
    constexpr unsigned long frameSize = 144000;
    const vcore::handle source(
        CreateFileW(stream, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    dvAVIFile file;
    if (!source || !file.create(avi, frameSize)) {
        throw std::runtime_error("the stream or the AVI file cannot be opened");
    }
    const FrameBuffers buffer(1, file.getAVIFrameSize());
    const Stopwatch watch;
    DWORD got = 0;
    while (ReadFile(source.get(), buffer[0] + 8, frameSize, &got, nullptr) && got == frameSize) {
        if (!file.writeFrame(reinterpret_cast<char*>(buffer[0]), frameSize,
                             static_cast<unsigned long>(buffer.size()))) {
            throw std::runtime_error("the AVI file takes no more");
        }
    }
    const unsigned long frames = file.frames();
    file.close();
    if (frames == 0) {
        throw std::runtime_error("the stream holds no frame");
    }
    return watch.seconds();
}
