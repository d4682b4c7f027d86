#include "replay/avi_file.h"

bool dvAVIFile::create(const wchar_t*, unsigned long) {
    return false;
}

bool dvAVIFile::open(const wchar_t*) {
    return false;
}

void dvAVIFile::close() {}

bool dvAVIFile::writeFrame(char*, unsigned long, unsigned long) {
    return false;
}

bool dvAVIFile::readFrame(char*, unsigned long, unsigned long) {
    return false;
}

void dvAVIFile::seekFrame(unsigned long) {}
