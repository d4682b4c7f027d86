#include "marvo/recording/dv_file.h"

#include "marvo/core/volume.h"

dvFile::dvFile() = default;

dvFile::~dvFile() = default;

unsigned long dvFile::alignSize(unsigned long size) const {
    const unsigned long over = size % alignment_;
    return over == 0 ? size : size + (alignment_ - over);
}

void dvFile::setFrameSize(unsigned long size) {
    data_.reset();
    vvideo::clearMediaType(type_);
    frameSize_ = 0;
    bufferSize_ = 0;
    if (size > maxFrameSize) {
        return;
    }
    data_ = allocSectors(alignSize(size + headerSize));
    if (!data_) {
        return;
    }
    frameSize_ = size;
    bufferSize_ = alignSize(size + headerSize);
    type_.initVideoType(size, 0xFFFFFFFFul);
}

void dvFile::_updateAlignment(const wchar_t* name) {
    if (const unsigned long sector = bytesPerSector(name); sector != 0) {
        alignment_ = sector;
    }
}

bool dvFile::_openUnbuffered(const wchar_t* name, unsigned long access, unsigned long share,
                             unsigned long creation) {
    close();
    if (!name || !*name) {
        return false;
    }
    setName(name);
    HANDLE handle = CreateFileW(name, access, share, nullptr, creation,
                                FILE_ATTRIBUTE_NORMAL | FILE_FLAG_NO_BUFFERING, nullptr);
    if (!attach(handle)) {
        return false;
    }
    _updateAlignment(name);
    return true;
}
