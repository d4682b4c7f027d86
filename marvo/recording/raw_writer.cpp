#include "marvo/recording/raw_writer.h"

#include "marvo/core/text.h"

#include <cstring>

namespace recording {

std::unique_ptr<Writer> RawWriter::create(const wchar_t* name, unsigned long frameSize,
                                          long long timePerFrame_100ns, std::wstring& error) {
    auto writer = std::make_unique<RawWriter>();
    if (frameSize > dvFile::maxFrameSize) {
        error = vcore::systemMessage(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!writer->file_.open(name)) {
        error = vcore::systemMessage(GetLastError());
        return nullptr;
    }
    writer->header_ = {static_cast<std::uint32_t>(frameSize), static_cast<std::uint32_t>(timePerFrame_100ns)};
    writer->recordBytes_ = writer->file_.alignSize(headerBytes + frameSize);
    return writer;
}

bool RawWriter::write(RecordBuffer& buffer) {
    if (buffer.bytes() < recordBytes_ || buffer.frameBytes() != header_.frameSize) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    std::memcpy(buffer.data(), &header_, sizeof header_);
    const unsigned long used = headerBytes + header_.frameSize;
    std::memset(buffer.data() + used, 0, recordBytes_ - used);
    return append(buffer.data(), recordBytes_);
}

} // namespace recording
