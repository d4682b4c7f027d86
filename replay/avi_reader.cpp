#include "replay/avi_reader.h"

int AviReader::open(const wchar_t*, FileIOAVI::Trust, AVI_ODMLFileInfo&) {
    return FileIOAVI::SystemRefused;
}

int AviReader::refresh(AVI_ODMLFileInfo&) {
    return FileIOAVI::Ok;
}

int AviReader::readFrame(char*, unsigned long, unsigned long) {
    return FileIOAVI::ReadFailed;
}

bool AviReader::framePosition(unsigned long, FileIOAVI::FramePosition&) const {
    return false;
}
