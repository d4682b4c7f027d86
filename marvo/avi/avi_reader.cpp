#include "marvo/avi/avi_reader.h"

#include "marvo/dv/layout.h"
#include "marvo/core/volume.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <new>

namespace {

/// The headers of most files are within this many bytes.
constexpr unsigned long headerBytes = 0x8000;

/// Chunk headers lie far from each other.
constexpr unsigned long walkBytes = 0x200;

} // namespace

int AviReader::fail(int code, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    if (std::vswprintf(error_, std::size(error_), format, arguments) < 0) {
        error_[std::size(error_) - 1] = L'\0';
    }
    va_end(arguments);
    return code;
}

int AviReader::open(const wchar_t* name, FileIOAVI::Trust trust, AVI_ODMLFileInfo& info,
                    const AviSearch::Progress& progress) {
    info = {};
    if (!source_.open(name)) {
        return fail(FileIOAVI::IndexFileNotOpen, L"Cannot open file %ls for reading index.", name);
    }
    name_ = name;
    try {
        return find(trust, info, progress);
    } catch (const std::bad_alloc&) {
        return fail(FileIOAVI::Damaged, L"not enough memory for the index");
    }
}

int AviReader::find(FileIOAVI::Trust trust, AVI_ODMLFileInfo& info, const AviSearch::Progress& progress) {
    source_.readAhead(headerBytes);
    const wchar_t* fault = header_.read(source_);
    source_.readAhead(walkBytes);
    if (!header_.hasVideo && header_.interleaved) {
        return fail(FileIOAVI::Refused,
                    L"interleaved DV (type 1) is not read, only DV video streams (type 2)");
    }
    if (trust == FileIOAVI::Trust::Nothing) {
        return search(info, progress);
    }
    if (fault) {
        return fail(header_.hasMain ? FileIOAVI::NoDescend : FileIOAVI::Damaged, L"%ls", fault);
    }
    if (!header_.hasVideo) {
        return fail(FileIOAVI::Refused, L"no DV video stream found");
    }
    describe(info);
    finder_.emplace(source_, header_, index_, info);
    finder_->find();
    return FileIOAVI::Ok;
}

int AviReader::search(AVI_ODMLFileInfo& info, const AviSearch::Progress& progress) {
    AviSearch search(source_, header_, index_, progress);
    search.find();
    broken_ = search.broken();
    if (!header_.hasVideo) {
        return fail(FileIOAVI::Damaged, L"no DV frames found");
    }
    describe(info);
    info.totalFrames = info.walkedFrames = index_.count();
    return FileIOAVI::Ok;
}

void AviReader::describe(AVI_ODMLFileInfo& info) const {
    info.headerTotalFrames = header_.extendedTotalFrames;
    info.firstPieceFrames = header_.main.totalFrames;
    info.videoStream = header_.videoStream;
    info.streams = header_.streams;
    info.audioStreams = header_.audioStreams;
}

int AviReader::refresh() {
    if (!finder_) {
        return FileIOAVI::Ok;
    }
    try {
        finder_->findNew();
    } catch (const std::bad_alloc&) {
        return fail(FileIOAVI::Damaged, L"not enough memory for the index");
    }
    return FileIOAVI::Ok;
}

int AviReader::readFrame(char* buffer, unsigned long bufferSize, unsigned long frame) {
    constexpr wchar_t readFault[] = L"(code %d) reading the video frame at index #%d\n";
    systemError_ = ERROR_HANDLE_EOF;
    if (frame >= index_.count()) {
        return fail(FileIOAVI::ReadFailed, readFault, ERROR_HANDLE_EOF, frame);
    }
    const unsigned long whole = sizeof(riff::ChunkHeader) + index_.size(frame);
    if (bufferSize < whole) {
        systemError_ = ERROR_INSUFFICIENT_BUFFER;
        return fail(
            FileIOAVI::Refused,
            L"the size of the avi frame buffer (%d) is not enough to store the entire avi frame %d (at "
            L"frame #%d)\n",
            bufferSize, whole, frame);
    }
    unsigned long error = 0;
    const unsigned long got = source_.read(index_.offset(frame), buffer, whole, &error);
    if (error != 0) {
        systemError_ = error;
        return fail(FileIOAVI::ReadFailed, readFault, error, frame);
    }
    if (got == 0) {
        return fail(
            FileIOAVI::ReadFailed,
            L"cannot set the file pointer to the offset of the correct file position for the frame #%d\n",
            frame);
    }
    riff::ChunkHeader header{};
    std::memcpy(&header, buffer, std::min<size_t>(got, sizeof(header)));
    if (got == whole) {
        systemError_ = ERROR_INVALID_DATA;
    }
    if (got != whole || header.size != index_.size(frame)) {
        return fail(FileIOAVI::ReadFailed,
                    L"number of bytes read is not equal to the size of the avi frame (frame #%d)\n", frame);
    }
    return header_.isFrame(header.id) ? FileIOAVI::Ok
                                      : fail(FileIOAVI::ReadFailed, readFault, FileIOAVI::Damaged, frame);
}

bool AviReader::framePosition(unsigned long frame, FileIOAVI::FramePosition& position) const {
    if (frame >= index_.count()) {
        return false;
    }
    position = {index_.offset(frame), index_.size(frame)};
    return true;
}

unsigned long AviReader::dataFrameSize() const {
    if (index_.count() == 0) {
        return header_.nominalFrameSize();
    }
    return vdv::isFrameSize(index_.size(0)) ? index_.size(0) : index_.largest();
}

unsigned long AviReader::slotSize() const {
    return sizeof(riff::ChunkHeader) + std::max<unsigned long>(index_.largest(), dataFrameSize());
}

unsigned long AviReader::sectorSize() const {
    return std::max(bytesPerSector(name_.oleStr()), 1ul);
}

unsigned long AviReader::dataRate() const {
    const double usual = (dataFrameSize() == vdv::palFrameBytes ? vdv::system625 : vdv::system525).rate;
    const double rate = header_.rate() > 0 && header_.rate() <= 1000 ? header_.rate() : usual;
    return static_cast<unsigned long>(std::min(rate * dataFrameSize(), 4294967295.0));
}
