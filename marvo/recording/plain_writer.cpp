#include "marvo/recording/plain_writer.h"

#include "marvo/core/text.h"
#include "marvo/core/volume.h"
#include "marvo/core/winthread.h"

namespace recording {

PlainWriter::~PlainWriter() {
    PlainWriter::finish();
}

bool PlainWriter::fail(unsigned long systemError) {
    systemError_ = systemError;
    return false;
}

bool PlainWriter::append(const void* data, unsigned long bytes) {
    const vwin::winthread::killable disk;
    unsigned long written = 0;
    file_.seek(end_);
    torn_ = true;
    // A disk that takes only a part of it gives no error.
    SetLastError(ERROR_SUCCESS);
    if (!file_.write(data, bytes, &written)) {
        const unsigned long code = GetLastError();
        cutTail();
        return fail(code != ERROR_SUCCESS ? code : ERROR_DISK_FULL);
    }
    end_ += bytes;
    torn_ = false;
    return true;
}

/// Brings the file back to its last whole part.
bool PlainWriter::cutTail() {
    const vwin::winthread::killable disk;
    if (torn_ && (file_.size() <= end_ || (file_.seek(end_) && file_.truncate()))) {
        torn_ = false;
    }
    return !torn_;
}

bool PlainWriter::flush() {
    const vwin::winthread::killable disk;
    return file_.flush() || fail(GetLastError());
}

bool PlainWriter::finish() {
    const bool whole = !file_.opened() || cutTail() || fail(GetLastError());
    file_.close();
    return whole;
}

unsigned long long PlainWriter::freeBytes() const {
    const vwin::winthread::killable disk;
    return file_.opened() ? freeBytesBeside(file_.handle()) : ~0ull;
}

std::wstring PlainWriter::error() const {
    return systemError_ != ERROR_SUCCESS ? vcore::systemMessage(systemError_) : std::wstring();
}

} // namespace recording
