#include "marvo/recording/rec_file.h"

bool dvRecFile::open(const wchar_t* name) {
    return _openUnbuffered(name, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
}
