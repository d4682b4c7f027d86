#include "marvo/recording/rec_file.h"

bool dvRecFile::open(const wchar_t* name) {
    return openAligned(name, GENERIC_WRITE, FILE_SHARE_READ, true);
}
