/// Records and reads files through the library, for tests that look at the files with other software.
///
///     record FILE STREAM FRAMESIZE [COUNT]   records the frames of a .dv stream, round and round, as fast as
///         the disk takes them (without COUNT until killed); prints each number of frames that are on disk,
///         and at the end how many of the newest the ring holds
///     read FILE STREAM FRAMESIZE [FRAME...]  prints for every frame (or those named) which frame of the
///         stream it is, -1 for none; AVI files when FILE holds ".avi", else raw records
///
/// Exit status: 0, 2 for wrong usage, 3 with a line on stderr when something is refused.

#include "marvo.h"
#include "marvo/avi/file_io_avi.h"

#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
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
        vwin::com_<IMediaSample> sample;
        if (!samples.getSample(sample.put(), -1, -1)) {
            return false;
        }
        BYTE* bytes = nullptr;
        sample->GetPointer(&bytes);
        std::memcpy(bytes, stream.frame(k), stream.frameSize());
        store.add(sample.ptr());
    }
    return true;
}

/// How many frames before `end` the ring still gives unchanged.
unsigned long heldFrames(dvFrameStore& store, const Stream& stream, unsigned long ringFrames,
                         unsigned long long end) {
    vvideo::dvFrame frame(stream.frameSize());
    unsigned long held = 0;
    for (unsigned long back = 1; back <= ringFrames && back <= end; ++back) {
        held += store.get(&frame, end - back) &&
                std::memcmp(frame.data(), stream.frame(end - back), stream.frameSize()) == 0;
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

int read(const wchar_t* name, Stream& stream, std::vector<unsigned long> wanted) {
    const bool isAvi = std::wstring(name).find(L".avi") != std::wstring::npos;
    dvAVIFile avi;
    dvPlayFile raw;
    const auto failed = [&](const wchar_t* reason) {
        return fail("read", isAvi ? avi.io().lastError() : reason);
    };
    if (isAvi ? !avi.open(name) : !raw.open(name, 0)) {
        return failed(L"cannot be opened");
    }
    const unsigned long frames = isAvi ? avi.frames() : raw.frameCount();
    if (frames > 0 && (isAvi ? avi.getDataFrameSize() : raw.frameSize()) != stream.frameSize()) {
        return fail("read", L"the frames have another size than the stream's");
    }
    if (wanted.empty()) {
        wanted.resize(frames);
        std::iota(wanted.begin(), wanted.end(), 0);
    }
    std::vector<unsigned char> slot(isAvi ? avi.getAVIFrameSize() : 0);
    for (const unsigned long number : wanted) {
        const bool done =
            isAvi ? avi.readFrame(reinterpret_cast<char*>(slot.data()), avi.getAVIFrameSize(), number)
                  : raw.seekFrame(number) && raw.readFrame();
        if (!done) {
            return failed(L"cannot be read");
        }
        std::printf("%ld\n", stream.find((isAvi ? slot.data() : raw.data()) + dvFile::headerSize));
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
