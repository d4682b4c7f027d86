#include "marvo/recording/plain_writer.h"

#include "marvo/core/text.h"
#include "marvo/core/winthread.h"

namespace recording {

bool PlainWriter::fail(unsigned long systemError) {
    systemError_ = systemError;
    return false;
}

bool PlainWriter::append(const void* data, unsigned long bytes) {
    const vwin::winthread::killable disk;
    unsigned long written = 0;
    file_.seek(end_);
    // A disk that takes only a part of it gives no error.
    SetLastError(ERROR_SUCCESS);
    if (!file_.write(data, bytes, &written)) {
        const unsigned long code = GetLastError();
        return fail(code != ERROR_SUCCESS ? code : ERROR_DISK_FULL);
    }
    end_ += bytes;
    return true;
}

bool PlainWriter::flush() {
    const vwin::winthread::killable disk;
    return file_.flush() || fail(GetLastError());
}

bool PlainWriter::finish() {
    file_.close();
    return true;
}

std::wstring PlainWriter::error() const {
    return systemError_ != ERROR_SUCCESS ? vcore::systemMessage(systemError_) : std::wstring();
}

} // namespace recording
