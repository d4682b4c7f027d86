#include "marvo/avi/avi_file.h"

#include "marvo/avi/file_io_avi.h"
#include "marvo/dv/dv_system.h"

#include <utility>

dvAVIFile::dvAVIFile() : io_(std::make_unique<FileIOAVI>()) {}

dvAVIFile::~dvAVIFile() = default;

bool dvAVIFile::create(const wchar_t* name, unsigned long frameSize) {
    FileIOAVI::Video video;
    video.is625 = frameSize == vdv::system625.frameBytes;
    video.height = (video.is625 ? vdv::system625 : vdv::system525).lines;
    return io_->create(name, video, true) == FileIOAVI::Ok;
}

bool dvAVIFile::open(const wchar_t* name) {
    return io_->open(name) == FileIOAVI::Ok;
}

void dvAVIFile::close() {
    io_->close();
}

bool dvAVIFile::opened() const {
    return io_->opened();
}

bool dvAVIFile::writeFrame(char* buffer, unsigned long frameSize, unsigned long bufferSize) {
    return io_->writeFrame(buffer, bufferSize, frameSize) == FileIOAVI::Ok;
}

bool dvAVIFile::readFrame(char* buffer, unsigned long bufferSize, unsigned long frame) {
    return io_->readFrame(buffer, bufferSize, frame) == FileIOAVI::Ok;
}

void dvAVIFile::seekFrame(unsigned long frame) {
    io_->seekFrame(frame);
}

void dvAVIFile::refresh() {
    io_->refresh();
}

unsigned long dvAVIFile::frames() const {
    return io_->frames();
}

unsigned long dvAVIFile::frame() const {
    return io_->frame();
}

unsigned long dvAVIFile::getSectorSize() const {
    const unsigned long size = io_->opened() ? io_->sectorSize() : 1;
    return size != 0 ? size : 1;
}

unsigned long dvAVIFile::getDataRate() const {
    return io_->dataRate();
}

unsigned long dvAVIFile::getDataFrameSize() const {
    return io_->dataFrameSize();
}

unsigned long dvAVIFile::getAVIFrameSize() const {
    return io_->slotSize();
}

void dvAVIFile::swap(dvAVIFile& other) {
    std::swap(io_, other.io_);
}
