#include "marvo/recording/dv_file.h"

#include "marvo/core/disk_file.h"
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

bool dvFile::openAligned(const wchar_t* name, unsigned long access, unsigned long share, bool fresh,
                         unsigned long sector) {
    close();
    if (!name || !*name) {
        return false;
    }
    setName(name);
    const vcore::DiskFile how = fresh ? vcore::DiskFile::emptied : vcore::DiskFile::existing;
    const DWORD flags = sector == 0 ? FILE_FLAG_NO_BUFFERING : 0;
    if (!attach(vcore::openDiskFile(name, access, share, how, flags).release())) {
        return false;
    }
    if (sector == 0) {
        _updateAlignment(name);
    } else {
        alignment_ = sector;
    }
    return true;
}
