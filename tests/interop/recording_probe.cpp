/// Records and reads files through the library, for tests that look at the files with other software.
///
///     record FILE STREAM FRAMESIZE [COUNT]   records the frames of a .dv stream, round and round, as fast as
///     the disk
///                                            takes them (without COUNT until killed); prints each number of
///                                            frames that are on disk, and at the end how many of the newest
///                                            the ring holds
///     read FILE STREAM FRAMESIZE [FRAME...]  prints for every frame (or those named) which frame of the
///     stream it
///                                            is, -1 for none; AVI files when FILE holds ".avi", else raw
///                                            records
///
/// Exit status: 0, 2 for wrong usage, 3 with a line on stderr when something is refused.

#include "marvo.h"
#include "marvo/avi/file_io_avi.h"

#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

enum ExitStatus { allWell = 0, wrongUsage = 2, refused = 3 };

/// The frames of a raw .dv stream.
class Stream {
public:
    bool load(const wchar_t* name, unsigned long frameSize) {
        vcore::file file;
        frameSize_ = frameSize;
        if (frameSize == 0 || !file.open(name)) {
            return false;
        }
        bytes_.resize(static_cast<size_t>(file.size()));
        return frames() > 0 && file.read(bytes_.data(), static_cast<unsigned long>(bytes_.size()), nullptr);
    }

    size_t frames() const { return bytes_.size() / frameSize_; }
    const unsigned char* frame(unsigned long long number) const {
        return bytes_.data() + static_cast<size_t>(number % frames()) * frameSize_;
    }
    unsigned long frameSize() const { return frameSize_; }

    /// Which frame `data` is, looked for from the one that is expected next; -1 for none.
    long find(const unsigned char* data) {
        for (size_t tried = 0; tried < frames(); ++tried, ++next_) {
            if (std::memcmp(frame(next_), data, frameSize_) == 0) {
                return static_cast<long>(next_++ % frames());
            }
        }
        return -1;
    }

private:
    std::vector<unsigned char> bytes_;
    unsigned long frameSize_ = 0;
    size_t next_ = 0;
};

/// The system takes whole lines from a killed process only when they are not kept back here.
void print(unsigned long long number) {
    std::printf("%llu\n", number);
    std::fflush(stdout);
}

/// Called on the writer thread before it takes frame `written`, when every frame before that is on disk.
void onTaking(unsigned long long, unsigned long long written) {
    print(written);
}

int fail(const char* what, const wchar_t* reason) {
    std::fprintf(stderr, "%s: %ls\n", what, reason);
    return refused;
}

/// Adds the stream's frames to the store, never so far ahead that the ring would lose one.
bool feed(dvFrameStore& store, const Stream& stream, unsigned long ringFrames, unsigned long long count) {
    vvideo::dvAlloc samples;
    if (!samples.create() || !samples.init(stream.frameSize(), 1, 0, 1)) {
        return false;
    }
    for (unsigned long long k = 0; k < count; ++k) {
        while (k - store.writtenFrame() >= ringFrames - 1) {
            Sleep(1);
        }
        IMediaSample* taken = nullptr;
        if (!samples.getSample(&taken, -1, -1)) {
            return false;
        }
        vvideo::Reference<IMediaSample> sample;
        sample.adopt(taken);
        BYTE* bytes = nullptr;
        sample->GetPointer(&bytes);
        std::memcpy(bytes, stream.frame(k), stream.frameSize());
        store.add(sample.get());
    }
    return true;
}

/// How many frames before `end` the ring still gives unchanged.
unsigned long heldFrames(dvFrameStore& store, const Stream& stream, unsigned long ringFrames,
                         unsigned long long end) {
    vvideo::dvFrame frame(stream.frameSize());
    unsigned long held = 0;
    for (unsigned long back = 1; back <= ringFrames && back <= end; ++back) {
        if (store.get(&frame, end - back) &&
            std::memcmp(frame.data(), stream.frame(end - back), stream.frameSize()) == 0) {
            ++held;
        }
    }
    return held;
}

int record(const wchar_t* name, const Stream& stream, std::optional<unsigned long long> count) {
    constexpr unsigned long ringFrames = 50;
    dvFrameStore store;
    const bool is625 = stream.frameSize() == 144000;
    if (!store.init(stream.frameSize(), is625 ? 400000 : 333667, ringFrames)) {
        return fail("record", L"there is no memory for the ring");
    }
    store.connectFunc(L"poolInfo", &onTaking);
    if (!store.startRecord(name)) {
        return fail("record", L"the file cannot be created");
    }
    if (!feed(store, stream, ringFrames, count.value_or(~0ull))) {
        return fail("record", L"there are no samples");
    }
    while (store.writtenFrame() < *count) {
        Sleep(1);
    }
    store.stopRecord();
    print(*count);
    std::printf("ring %lu\n", heldFrames(store, stream, ringFrames, *count));
    return allWell;
}

/// Reads AVI files and raw recordings alike.
class Recording {
public:
    explicit Recording(const std::wstring& name) : avi_(name.find(L".avi") != std::wstring::npos) {
        opened_ = avi_ ? aviFile_.open(name.c_str()) : rawFile_.open(name.c_str(), 0);
        buffer_.resize(avi_ ? aviFile_.getAVIFrameSize() : 0);
    }

    bool opened() const { return opened_; }
    const wchar_t* reason() const { return avi_ ? aviFile_.io().lastError() : L"cannot be opened"; }
    unsigned long frames() const { return avi_ ? aviFile_.frames() : rawFile_.frameCount(); }
    unsigned long frameSize() const { return avi_ ? aviFile_.getDataFrameSize() : rawFile_.frameSize(); }

    /// The bytes of a frame; null when it cannot be read.
    const unsigned char* read(unsigned long frame) {
        if (!avi_) {
            return rawFile_.seekFrame(frame) && rawFile_.readFrame() ? rawFile_.data() + dvFile::headerSize
                                                                     : nullptr;
        }
        aviFile_.seekFrame(frame);
        const bool done =
            aviFile_.readFrame(buffer_.data(), static_cast<unsigned long>(buffer_.size()), frame);
        return done ? reinterpret_cast<const unsigned char*>(buffer_.data()) + 8 : nullptr;
    }

private:
    bool avi_;
    bool opened_ = false;
    dvAVIFile aviFile_;
    dvPlayFile rawFile_;
    std::vector<char> buffer_;
};

int read(const wchar_t* name, Stream& stream, std::vector<unsigned long> wanted) {
    Recording recording(name);
    if (!recording.opened()) {
        return fail("read", recording.reason());
    }
    if (recording.frames() > 0 && recording.frameSize() != stream.frameSize()) {
        return fail("read", L"the frames have another size than the stream's");
    }
    if (wanted.empty()) {
        for (unsigned long k = 0; k < recording.frames(); ++k) {
            wanted.push_back(k);
        }
    }
    for (const unsigned long number : wanted) {
        const unsigned char* data = recording.read(number);
        if (!data) {
            return fail("read", recording.reason());
        }
        std::printf("%ld\n", stream.find(data));
    }
    return allWell;
}

int run(int count, wchar_t** words) {
    Stream stream;
    if (count < 5) {
        return wrongUsage;
    }
    if (!stream.load(words[3], std::wcstoul(words[4], nullptr, 10))) {
        return fail("stream", L"cannot be read");
    }
    if (std::wstring(words[1]) == L"record") {
        return record(words[2], stream,
                      count > 5 ? std::optional(std::wcstoull(words[5], nullptr, 10)) : std::nullopt);
    }
    std::vector<unsigned long> wanted;
    for (int i = 5; i < count; ++i) {
        wanted.push_back(std::wcstoul(words[i], nullptr, 10));
    }
    return std::wstring(words[1]) == L"read" ? read(words[2], stream, wanted) : wrongUsage;
}

} // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    const int status = words ? run(count, words) : wrongUsage;
    LocalFree(words);
    CoUninitialize();
    return status;
}
