#include "tools/raw_recording.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace dvrec {

namespace {

constexpr unsigned long commonSectors[] = {512, 4096, 1024, 2048, 8192, 16384, 32768, 65536};

unsigned long recordSizeFor(unsigned long frameSize, unsigned long sector) {
    const unsigned long bytes = frameSize + dvFile::headerSize;
    return (bytes + sector - 1) / sector * sector;
}

/// The sector size of the volume on which a file lies.
unsigned long sectorOfVolume(const std::wstring& name) {
    dvPlayFile file;
    return file.open(name.c_str(), 1) ? file.alignment() : commonSectors[0];
}

} // namespace

bool RawRecording::isRecordStart(FrameBytes head) {
    Header header;
    if (head.size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, head.data(), sizeof header);
    return isFrameSize(header.frameSize) && isFrameStart(head.subspan(sizeof header));
}

RawRecording::RawRecording(InputFile source, unsigned long sector) : Recording(std::move(source)) {
    file().read(0, {reinterpret_cast<unsigned char*>(&first_), sizeof first_});
    sector_ = sector != 0 ? sector : findSector();
    recordSize_ = recordSizeFor(first_.frameSize, sector_);
    constexpr unsigned long long mostFrames = 0xFFFFFFFF;
    frames_ = static_cast<unsigned long>(std::min(file().size() / recordSize_, mostFrames));
}

unsigned long RawRecording::findSector() const {
    for (const unsigned long sector : commonSectors) {
        std::array<unsigned char, 16> head;
        const size_t got = file().read(recordSizeFor(first_.frameSize, sector), head);
        if (isRecordStart(FrameBytes(head).first(got))) {
            return sector;
        }
    }
    return sectorOfVolume(file().name());
}

Recording::Place RawRecording::place(unsigned long frame) const {
    return {static_cast<unsigned long long>(frame) * recordSize_ + sizeof(Header), first_.frameSize};
}

unsigned long long RawRecording::tail() const {
    return file().size() - static_cast<unsigned long long>(frames_) * recordSize_;
}

RawRecording::Header RawRecording::header(unsigned long frame) const {
    Header header;
    file().read(static_cast<unsigned long long>(frame) * recordSize_,
                {reinterpret_cast<unsigned char*>(&header), sizeof header});
    return header;
}

} // namespace dvrec
