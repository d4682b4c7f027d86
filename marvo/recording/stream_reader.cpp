#include "marvo/recording/stream_reader.h"

#include "marvo/core/text.h"
#include "marvo/dv/layout.h"

namespace recording {

std::unique_ptr<Reader> StreamReader::open(const wchar_t* name, const OpenOptions&, std::wstring& error) {
    std::unique_ptr<StreamReader> reader(new StreamReader(name));
    if (!reader->input_.open(name)) {
        error = vcore::systemMessage(GetLastError());
        return nullptr;
    }
    unsigned char head[headBytes];
    if (!isStreamStart(head, reader->input_.read(0, head, sizeof head))) {
        error = L"it does not start as a DV stream";
        return nullptr;
    }
    reader->frameSize_ = frameSizeAt(reader->input_, 0);
    reader->refresh();
    return reader;
}

bool StreamReader::isStreamStart(const unsigned char* head, std::size_t bytes) {
    // The byte behind tells the system.
    return bytes > vdv::startBytes && vdv::isFrameStart({head, bytes});
}

unsigned long StreamReader::frameSizeAt(const InputFile& file, unsigned long long offset) {
    unsigned char id[vdv::startBytes + 1];
    const std::size_t got = file.read(offset, id, sizeof id);
    const unsigned long size = vdv::systemSaid({id, got}).frameBytes;
    const std::size_t behind = file.read(offset + size, id, sizeof id);
    return vdv::isSecondChannelStart({id, behind}) ? 2 * size : size;
}

unsigned long StreamReader::frameSizeOf(vdv::FrameBytes bytes) {
    const unsigned long size = vdv::systemSaid(bytes).frameBytes;
    const bool second = bytes.size() > size && vdv::isSecondChannelStart(bytes.subspan(size));
    return second ? 2 * size : size;
}

void StreamReader::refresh() {
    frames_ = input_.size() / frameSize_;
}

bool StreamReader::read(unsigned long long frame, RecordBuffer& buffer) {
    if (!buffer.setFrameBytes(frameSize_)) {
        error_ = L"the buffer is smaller than the frame";
        return false;
    }
    if (frame >= frames_ || input_.read(offset(frame), buffer.frame(), frameSize_) != frameSize_) {
        error_ = L"it is not there as a whole";
        return false;
    }
    return true;
}

} // namespace recording
