#include "marvo/recording/raw_reader.h"

#include "marvo/core/text.h"
#include "marvo/core/volume.h"
#include "marvo/core/winthread.h"
#include "marvo/dv/layout.h"

#include <algorithm>
#include <cstring>

namespace recording {

namespace {

constexpr unsigned long commonSectors[] = {512, 4096, 1024, 2048, 8192, 16384, 32768, 65536};

unsigned long long recordBytes(unsigned long frameSize, unsigned long sector) {
    return (0ull + frameSize + headerBytes + sector - 1) / sector * sector;
}

} // namespace

std::unique_ptr<Reader> RawReader::open(const wchar_t* name, const OpenOptions& options,
                                        std::wstring& error) {
    std::unique_ptr<RawReader> reader(new RawReader(name));
    const unsigned long sector =
        options.anyVolume && options.sector == 0 ? reader->findSector() : options.sector;
    const bool opened =
        options.anyVolume ? reader->file_.openMadeElsewhere(name, sector) : reader->file_.open(name, 0);
    if (!opened) {
        const unsigned long code = GetLastError();
        error = InputFile().open(name) ? L"its first record names an impossible frame size"
                                       : vcore::systemMessage(code);
        return nullptr;
    }
    return reader;
}

bool RawReader::isRecordStart(const unsigned char* head, std::size_t bytes) {
    RecordHeader header{};
    if (bytes < sizeof header) {
        return false;
    }
    std::memcpy(&header, head, sizeof header);
    return vdv::isFrameSize(header.frameSize) &&
           vdv::isFrameStart({head + sizeof header, bytes - sizeof header});
}

/// The sector size with which a second record stands where it should; without one, that of the volume.
unsigned long RawReader::findSector() const {
    RecordHeader first{};
    file().read(0, &first, sizeof first);
    for (const unsigned long sector : commonSectors) {
        unsigned char head[headerBytes + vdv::startBytes];
        const std::size_t got = file().read(recordBytes(first.frameSize, sector), head, sizeof head);
        if (isRecordStart(head, got)) {
            return sector;
        }
    }
    return std::max(bytesPerSector(name().c_str()), 1ul);
}

bool RawReader::read(unsigned long long frame, RecordBuffer& buffer) {
    const unsigned long bytes = file_.bufferSize();
    if (bytes == 0 || buffer.bytes() < bytes || !buffer.setFrameBytes(frameSize())) {
        systemError_ = ERROR_INSUFFICIENT_BUFFER;
        return false;
    }
    if (!file_.seekFrame(static_cast<long long>(std::min<unsigned long long>(frame, LLONG_MAX)))) {
        systemError_ = ERROR_HANDLE_EOF;
        return false;
    }
    SetLastError(ERROR_SUCCESS);
    unsigned long got = 0;
    const vwin::winthread::killable slowDisk;
    // Past the file's own buffer: the frame is needed here.
    if (file_.vcore::file::read(buffer.data(), bytes, &got) && got == bytes) {
        RecordHeader said{};
        std::memcpy(&said, buffer.data(), sizeof said);
        // A single header that lies is damage, which costs no frame. When the first one lies as well, another
        // recording has been written over this one.
        if (isOurs(said) || isOurs(header(0))) {
            return true;
        }
        systemError_ = ERROR_FILE_INVALID;
        return false;
    }
    const unsigned long code = GetLastError();
    systemError_ = code != ERROR_SUCCESS ? code : ERROR_HANDLE_EOF;
    return false;
}

std::wstring RawReader::error() const {
    return systemError_ != ERROR_SUCCESS ? vcore::systemMessage(systemError_) : std::wstring();
}

bool RawReader::isOurs(const RecordHeader& header) const {
    return header.frameSize == 0 || header.frameSize == frameSize();
}

RecordHeader RawReader::header(unsigned long long frame) const {
    RecordHeader header{};
    file().read(offset(frame), &header, sizeof header);
    return header;
}

std::vector<Reader::Fact> RawReader::facts() const {
    return {{"recordSize", "record size", file_.bufferSize()}, {"sector", "sector size", file_.alignment()}};
}

unsigned long long RawReader::check(const FaultCall& fault, const ProgressCall& progress,
                                    unsigned long mostFaults) const {
    unsigned long long found = 0;
    const auto tell = [&](unsigned long long at, const std::string& text) {
        if (found++ < mostFaults) {
            fault(at, text);
        }
    };
    const RecordHeader first = header(0);
    for (unsigned long long frame = 0; frame < frames(); ++frame) {
        const RecordHeader here = header(frame);
        if (here.frameSize != first.frameSize) {
            tell(offset(frame),
                 vcore::format("record %llu says that its frame has %lu bytes, the first record %lu", frame,
                               static_cast<unsigned long>(here.frameSize),
                               static_cast<unsigned long>(first.frameSize)));
        } else if (here.timePerFrame_100ns != first.timePerFrame_100ns) {
            tell(offset(frame),
                 vcore::format("record %llu has another time per frame than the first", frame));
        }
    }
    const auto told = static_cast<unsigned long>(std::min<unsigned long long>(found, mostFaults));
    return found - told + PlainReader::check(fault, progress, mostFaults - told);
}

} // namespace recording
