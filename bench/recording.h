/// @file
/// Recordings to measure with, and files that go when they are done with.
#pragma once

#include "bench/frame_buffers.h"

#include <functional>
#include <string>
#include <vector>

/// Bytes of one record of a raw recording in the current directory's volume: `frameSize` + 8, rounded up to
/// sectors.
size_t recordSize(size_t frameSize);

/// A file that is removed at the end; made by others.
class TemporaryFile {
public:
    /// Removes a file of that name that is left over.
    explicit TemporaryFile(std::wstring name);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const wchar_t* name() const { return name_.c_str(); }
    void remove() const;
    /// Bytes; 0 when there is no file.
    unsigned long long size() const;

private:
    const std::wstring name_;
};

/// The frames of a raw DV stream as the simulated camera plays it, all in memory.
class Stream {
public:
    static constexpr size_t palFrame = 144000;

    /// Throws std::runtime_error when the file cannot be read.
    Stream(const std::string& path, size_t frameSize);

    size_t frameSize() const { return frameSize_; }
    size_t frames() const { return bytes_.size() / frameSize_; }
    /// Frame number `index` modulo their count.
    const unsigned char* operator[](size_t index) const { return &bytes_[index % frames() * frameSize_]; }

    /// The number of the frame with these bytes; `expected` is tried first. -1 when it is none of the
    /// stream's.
    long find(const unsigned char* frame, size_t expected) const;

private:
    size_t frameSize_;
    std::vector<unsigned char> bytes_;
};

/// Where the test streams lie: the file `name` in the folder that the environment variable MARVO_STREAMS
/// names.
std::string streamPath(const char* name);

/// For each record of a raw recording the number of the stream's frame it holds, -1 for none. `progress` is
/// told the number of records read and their count. Throws std::runtime_error when the file cannot be read.
std::vector<long> identify(const wchar_t* recording, const Stream& stream,
                           const std::function<void(double, double)>& progress);

/// Writes `frames` records, unbuffered and in turn, to a new file, with `flushCount` flushes spread evenly.
/// Returns the seconds from the first record until the file is closed. Throws std::runtime_error when the
/// disk refuses one.
double writeRecords(const FrameBuffers& records, const TemporaryFile& file, int frames, int flushCount);
