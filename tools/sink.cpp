#include "tools/sink.h"

#include "tools/text.h"

#include <cstdint>
#include <cstring>

namespace dvrec {

namespace {

/// Any file that is written plainly.
class FileSink : public Sink {
public:
    void finish() override {
        if (!file_.flush()) {
            throw cannotWrite(name_, systemMessage(GetLastError()));
        }
        file_.close();
    }

protected:
    explicit FileSink(const OutputFile& output) : name_(output.name()) {}

    void create(bool created) const {
        if (!created) {
            throw cannotWrite(name_, systemMessage(GetLastError()));
        }
    }

    void append(std::span<const unsigned char> bytes) {
        unsigned long written = 0;
        // A disk that takes only a part of it gives no error.
        SetLastError(ERROR_SUCCESS);
        if (!file_.write(bytes.data(), static_cast<unsigned long>(bytes.size()), &written)) {
            const DWORD error = GetLastError();
            throw cannotWrite(name_, error != ERROR_SUCCESS ? systemMessage(error) : "the disk is full");
        }
    }

    dvRecFile file_;

private:
    const std::wstring name_;
};

class StreamSink final : public FileSink {
public:
    explicit StreamSink(const OutputFile& output) : FileSink(output) {
        // Frames are no whole number of sectors, so this file is not opened as a recording is.
        create(file_.attach(CreateFileW(output.temporaryName().c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                        nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)));
    }

    void write(Slot& slot) override { append(slot.frame()); }
};

class RawSink final : public FileSink {
public:
    RawSink(const OutputFile& output, unsigned long frameSize) : FileSink(output) {
        create(file_.open(output.temporaryName().c_str()));
        file_.setFrameSize(frameSize);
    }

    void write(Slot& slot) override {
        const std::uint32_t header[] = {static_cast<std::uint32_t>(slot.frame().size()),
                                        static_cast<std::uint32_t>(file_.type().timePerFrame())};
        static_assert(sizeof header == Slot::headerBytes);
        const std::span<unsigned char> record = slot.all().first(file_.bufferSize());
        std::memcpy(record.data(), header, sizeof header);
        const size_t used = sizeof header + slot.frame().size();
        std::memset(record.data() + used, 0, record.size() - used);
        append(record);
    }
};

class AviSink final : public Sink {
public:
    AviSink(const OutputFile& output, unsigned long frameSize) : name_(output.name()) {
        FileIOAVI::Video video;
        video.is625 = is625Size(frameSize);
        video.height = video.is625 ? 576 : 480;
        video.subKind = frameSize > 144000 ? 422 : 420;
        check(avi_.create(output.temporaryName().c_str(), video, true));
        if (avi_.dataFrameSize() != frameSize) {
            throw cannotWrite(name_, "AVI files take DV frames of 25 and 50 Mbit/s, and these have " +
                                         counted(frameSize, "byte"));
        }
    }

    void write(Slot& slot) override {
        check(avi_.writeFrame(reinterpret_cast<char*>(slot.all().data()),
                              static_cast<unsigned long>(slot.all().size()),
                              static_cast<unsigned long>(slot.frame().size())));
    }

    void finish() override { check(avi_.close()); }

private:
    void check(int code) const {
        if (code == FileIOAVI::Ok) {
            return;
        }
        std::string reason = utf8(avi_.lastError());
        while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r' || reason.back() == '.')) {
            reason.pop_back();
        }
        throw cannotWrite(name_, reason.empty() ? "the AVI writer gave no reason" : reason);
    }

    const std::wstring name_;
    FileIOAVI avi_;
};

} // namespace

std::unique_ptr<Sink> createSink(Kind kind, const OutputFile& output, unsigned long frameSize) {
    if (kind == Kind::avi) {
        return std::make_unique<AviSink>(output, frameSize);
    }
    if (kind == Kind::raw) {
        return std::make_unique<RawSink>(output, frameSize);
    }
    return std::make_unique<StreamSink>(output);
}

} // namespace dvrec
