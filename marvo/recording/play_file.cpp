#include "marvo/recording/play_file.h"

#include <algorithm>
#include <cstring>

namespace {

/// Taken when a recording does not say its frame size: a 625/50 DV frame.
constexpr unsigned long defaultFrameSize = vdv::palFrameBytes;

} // namespace

bool dvPlayFile::open(const wchar_t* name, unsigned long frameSize) {
    return openWith(name, frameSize, 0);
}

bool dvPlayFile::openMadeElsewhere(const wchar_t* name, unsigned long sector) {
    return openWith(name, 0, sector);
}

bool dvPlayFile::openWith(const wchar_t* name, unsigned long frameSize, unsigned long sector) {
    frameCount_ = 0;
    if (!openAligned(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, false, sector)) {
        return false;
    }
    recording::RecordHeader header{};
    if (frameSize == 0) {
        const unsigned long head = alignSize(headerSize);
        const SectorBuffer first = allocSectors(head);
        unsigned long got = 0;
        if (first && vcore::file::read(first.get(), head, &got) && got >= headerSize) {
            std::memcpy(&header, first.get(), sizeof(header));
        }
        seek(0);
        frameSize = header.frameSize != 0 ? header.frameSize : defaultFrameSize;
    }
    setFrameSize(frameSize);
    if (!data()) {
        close();
        return false;
    }
    if (header.timePerFrame_100ns != 0) {
        type_.setTimePerFrame(header.timePerFrame_100ns);
    }
    refresh();
    return true;
}

void dvPlayFile::refresh() {
    LARGE_INTEGER size{};
    if (!opened() || bufferSize() == 0 || !GetFileSizeEx(handle(), &size)) {
        return;
    }
    const auto records = static_cast<unsigned long long>(size.QuadPart) / bufferSize();
    frameCount_ = static_cast<unsigned long>(std::min<unsigned long long>(records, 0xFFFFFFFFull));
}

bool dvPlayFile::seekFrame(long long frame) {
    if (!opened() || frameCount_ == 0) {
        return false;
    }
    if (frame > static_cast<long long>(frameCount_)) {
        frame = static_cast<long long>(frameCount_) - 1;
    } else if (frame < 0) {
        frame = 0;
    }
    return seek(static_cast<unsigned long long>(frame) * bufferSize());
}

bool dvPlayFile::readRecord(unsigned long& got) {
    got = 0;
    return opened() && data() && vcore::file::read(data(), bufferSize(), &got);
}

bool dvPlayFile::readFrame() {
    unsigned long got = 0;
    return readRecord(got) && got == bufferSize();
}

bool dvPlayFile::read(void* dest, unsigned long size, unsigned long* got) {
    if (!opened() || !dest || bufferSize() < headerSize || size > bufferSize() - headerSize) {
        return false;
    }
    unsigned long bytes = 0;
    if (!readRecord(bytes) || bytes < size + headerSize) {
        return false;
    }
    std::memcpy(dest, data() + headerSize, size);
    if (got) {
        *got = size;
    }
    return true;
}

long long dvPlayFile::loopedFrame(long long frame) const {
    const auto count = static_cast<long long>(frameCount_);
    if (count == 0) {
        return 0;
    }
    return frame >= 0 ? frame % count : frame % count + count;
}

long long dvPlayFile::shortedFrame(long long frame) const {
    if (frame < static_cast<long long>(frameCount_)) {
        return frame;
    }
    return static_cast<std::uint32_t>(frameCount_ - 1);
}
