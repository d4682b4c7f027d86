#include "replay/avi_writer.h"

int AviWriter::create(const wchar_t*, const FileIOAVI::Video&, bool, AVI_ODMLFileInfo&) {
    return FileIOAVI::SystemRefused;
}

int AviWriter::writeFrame(char*, unsigned long, unsigned long) {
    return FileIOAVI::Refused;
}

int AviWriter::close() {
    return FileIOAVI::Ok;
}
