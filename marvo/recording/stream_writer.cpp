#include "marvo/recording/stream_writer.h"

#include "marvo/core/disk_file.h"
#include "marvo/core/text.h"

namespace recording {

std::unique_ptr<Writer> StreamWriter::create(const wchar_t* name, unsigned long frameSize, long long,
                                             std::wstring& error) {
    auto writer = std::make_unique<StreamWriter>();
    writer->frameSize_ = frameSize;
    // Frames are no whole number of sectors, so this file does not pass the system's cache by.
    if (!writer->file_.attach(
            vcore::openDiskFile(name, GENERIC_WRITE, FILE_SHARE_READ, vcore::DiskFile::emptied).release())) {
        error = vcore::systemMessage(GetLastError());
        return nullptr;
    }
    return writer;
}

bool StreamWriter::write(RecordBuffer& buffer) {
    return buffer.frameBytes() == frameSize_ ? append(buffer.frame(), frameSize_)
                                             : fail(ERROR_INVALID_PARAMETER);
}

} // namespace recording
