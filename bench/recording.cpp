#include "bench/recording.h"

#include "bench/stopwatch.h"
#include "marvo.h"

#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace {
constexpr size_t headerSize = 8;
}

size_t recordSize(size_t frameSize) {
    DWORD sectorsPerCluster = 0, sector = 512, freeClusters = 0, clusters = 0;
    GetDiskFreeSpaceA(nullptr, &sectorsPerCluster, &sector, &freeClusters, &clusters);
    return (frameSize + headerSize + sector - 1) / sector * sector;
}

TemporaryFile::TemporaryFile(std::wstring name) : name_(std::move(name)) {
    remove();
}

TemporaryFile::~TemporaryFile() {
    remove();
}

void TemporaryFile::remove() const {
    DeleteFileW(name_.c_str());
}

unsigned long long TemporaryFile::size() const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(name_.c_str(), GetFileExInfoStandard, &data);
    return static_cast<unsigned long long>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

std::string streamPath(const char* name) {
    char folder[MAX_PATH] = "";
    GetEnvironmentVariableA("MARVO_STREAMS", folder, sizeof(folder));
    return std::string(folder) + "\\" + name;
}

Stream::Stream(const std::string& path, size_t frameSize) : frameSize_(frameSize) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::streamoff>(file.tellg());
    if (size < static_cast<std::streamoff>(frameSize)) {
        throw std::runtime_error("there is no test stream " + path + " (scripts/make_streams.sh makes it)");
    }
    bytes_.resize(static_cast<size_t>(size) / frameSize * frameSize);
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes_.data()), static_cast<std::streamsize>(bytes_.size()));
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
}

long Stream::find(const unsigned char* frame, size_t expected) const {
    for (size_t i = 0; i < frames(); ++i) {
        if (std::memcmp((*this)[expected + i], frame, frameSize_) == 0) {
            return static_cast<long>((expected + i) % frames());
        }
    }
    return -1;
}

std::vector<long> identify(const wchar_t* recording, const Stream& stream,
                           const std::function<void(double, double)>& progress) {
    vcore::file file(recording, OPEN_EXISTING);
    if (!file.open(nullptr)) {
        throw std::runtime_error("the recording cannot be opened");
    }
    const size_t size = recordSize(stream.frameSize());
    const auto records = static_cast<size_t>(file.size() / size);
    const FrameBuffers record(1, size);
    std::vector<long> frames;
    for (size_t k = 0; k < records; ++k) {
        unsigned long done = 0;
        if (!file.read(record[0], static_cast<unsigned long>(size), &done) || done != size) {
            throw std::runtime_error("the recording cannot be read");
        }
        const size_t expected =
            frames.empty() || frames.back() < 0 ? 0 : static_cast<size_t>(frames.back()) + 1;
        frames.push_back(stream.find(record[0] + headerSize, expected));
        progress(static_cast<double>(k), static_cast<double>(records));
    }
    return frames;
}

double writeRecords(const FrameBuffers& records, const TemporaryFile& file, int frames, int flushCount) {
    file.remove();
    vcore::handle handle(CreateFileW(file.name(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                     FILE_FLAG_NO_BUFFERING, nullptr));
    const Stopwatch watch;
    int flushed = 0;
    for (int i = 0; i < frames; ++i) {
        DWORD done = 0;
        if (!WriteFile(handle.get(), records[static_cast<size_t>(i)], static_cast<DWORD>(records.size()),
                       &done, nullptr) ||
            done != records.size()) {
            throw std::runtime_error("the disk takes no more");
        }
        if ((i + 1) * flushCount / frames > flushed) {
            FlushFileBuffers(handle.get());
            ++flushed;
        }
    }
    handle.reset();
    return watch.seconds();
}
