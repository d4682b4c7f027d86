#include "marvo/avi/file_io_avi.h"

#include "marvo/avi/avi_reader.h"
#include "marvo/avi/avi_writer.h"
#include "marvo/core/guarded.h"

#include <algorithm>
#include <cwchar>

FileIOAVI::FileIOAVI() = default;

FileIOAVI::~FileIOAVI() {
    close();
}

int FileIOAVI::done(int code, const wchar_t* text) {
    const size_t length = code == Ok ? 0 : std::min(std::wcslen(text), std::size(lastError_) - 1);
    std::wmemcpy(lastError_, text, length);
    lastError_[length] = L'\0';
    return code;
}

int FileIOAVI::failed(int code, const AviWriter& writer) {
    systemError_ = writer.systemError();
    return done(code, writer.error());
}

template <class Open>
int FileIOAVI::withMemory(Open open) {
    const int code = vcore::guarded(-1, open);
    return code >= 0 ? code : done(SystemRefused, L"there is not enough memory\n");
}

int FileIOAVI::create(const wchar_t* name, const Video& video, bool unbuffered) {
    return createWith(name, video, nullptr, unbuffered);
}

int FileIOAVI::create(const wchar_t* name, const Video& video, const Sound& sound, bool unbuffered) {
    return createWith(name, video, &sound, unbuffered);
}

int FileIOAVI::createWith(const wchar_t* name, const Video& video, const Sound* sound, bool unbuffered) {
    if (!name || opened()) {
        return Refused;
    }
    return withMemory([&] {
        auto writer = std::make_unique<AviWriter>();
        const int code = writer->create(name, video, sound, unbuffered, info_);
        failed(code, *writer);
        if (code == Ok) {
            frame_ = 0;
            writer_ = std::move(writer);
        }
        return code;
    });
}

int FileIOAVI::open(const wchar_t* name, Trust trust) {
    if (!name || opened()) {
        return Refused;
    }
    return withMemory([&] {
        auto reader = std::make_unique<AviReader>();
        const int code = reader->open(name, trust, info_);
        done(code, reader->error());
        if (code == Ok) {
            frame_ = 0;
            reader_ = std::move(reader);
        }
        return code;
    });
}

int FileIOAVI::close() {
    const int code = writer_ ? writer_->close() : Ok;
    if (code != Ok) {
        failed(code, *writer_);
    }
    writer_.reset();
    reader_.reset();
    info_ = {};
    frame_ = 0;
    return code;
}

int FileIOAVI::writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize) {
    return writeFrame(buffer, bufferSize, frameSize, nullptr, 0);
}

int FileIOAVI::writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize, const void* sound,
                          unsigned long soundBytes) {
    if (!writer_ || !buffer) {
        return done(Refused, L"the file was not created for writing\n");
    }
    const int code = writer_->writeFrame(buffer, bufferSize, frameSize, sound, soundBytes);
    if (code != Ok) {
        return failed(code, *writer_);
    }
    ++frame_;
    return code;
}

int FileIOAVI::readFrame(char* buffer, unsigned long bufferSize, unsigned long frame) {
    if (!reader_ || !buffer) {
        return done(Refused, L"the file was not opened for reading or the size of input buffer incorrect\n");
    }
    const int code = reader_->readFrame(buffer, bufferSize, frame);
    if (code != Ok) {
        return done(code, reader_->error());
    }
    frame_ = frame + 1;
    return code;
}

unsigned long FileIOAVI::systemError() const {
    return reader_ ? reader_->systemError() : systemError_;
}

void FileIOAVI::seekFrame(unsigned long frame) {
    if (frames() != 0) {
        frame_ = frame % frames();
    }
}

int FileIOAVI::refresh() {
    return reader_ ? reader_->refresh() : static_cast<int>(Ok);
}

bool FileIOAVI::framePosition(unsigned long frame, FramePosition& position) const {
    return reader_ && reader_->framePosition(frame, position);
}

unsigned long long FileIOAVI::freeBytes() const {
    return writer_ ? writer_->freeBytes() : ~0ull;
}

unsigned long FileIOAVI::dataFrameSize() const {
    return writer_ ? writer_->dataFrameSize() : reader_ ? reader_->dataFrameSize() : 0;
}

unsigned long FileIOAVI::slotSize() const {
    return writer_ ? writer_->slotSize() : reader_ ? reader_->slotSize() : 0;
}

unsigned long FileIOAVI::dataRate() const {
    return writer_ ? writer_->dataRate() : reader_ ? reader_->dataRate() : 0;
}

unsigned long FileIOAVI::sectorSize() const {
    return writer_ ? writer_->sectorSize() : reader_ ? reader_->sectorSize() : 1;
}
