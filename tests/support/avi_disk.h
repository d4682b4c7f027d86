/// @file
/// A disk in memory for the writer of AVI files, and a strict look at what is on it.
#pragma once

#include "marvo/avi/avi_output.h"
#include "marvo/avi/file_io_avi.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace avi {

/// A disk in memory, with sectors of any size, that notes every write and fails where it is told to.
struct Disk {
    unsigned long sector = 512;
    unsigned long long room = ~0ull; ///< bytes that the file may grow to
    bool tellsRoom = false;
    std::function<void()> beforeWrite = [] {};
    std::string bytes;
    std::vector<std::pair<size_t, std::string>> writes;

    /// The file after the first `count` writes and `part` bytes of the one that follows.
    std::string after(size_t count, size_t part) const {
        std::string file;
        for (size_t i = 0; i < count + (part != 0); ++i) {
            put(file, writes[i].first, i < count ? writes[i].second : writes[i].second.substr(0, part));
        }
        return file;
    }

    static void put(std::string& file, size_t at, const std::string& data) {
        file.resize(std::max(file.size(), at + data.size()));
        file.replace(at, data.size(), data);
    }
};

/// The writer's way to a `Disk`.
class DiskOutput : public AviOutput {
public:
    explicit DiskOutput(Disk& disk) : disk_(disk) {}
    int create(const wchar_t*, bool) override { return FileIOAVI::Ok; }
    unsigned long sectorSize(const wchar_t*) const override { return disk_.sector; }
    unsigned long long freeBytes() const override {
        return disk_.tellsRoom ? disk_.room - disk_.bytes.size() : ~0ull;
    }
    int write(unsigned long long at, const void* data, unsigned long size) override {
        disk_.beforeWrite();
        const auto fitting =
            static_cast<size_t>(std::min<unsigned long long>(size, disk_.room - std::min(at, disk_.room)));
        const std::string written(static_cast<const char*>(data), fitting);
        Disk::put(disk_.bytes, static_cast<size_t>(at), written);
        disk_.writes.emplace_back(static_cast<size_t>(at), written);
        return fitting == size ? FileIOAVI::Ok : FileIOAVI::ShortWrite;
    }
    void close(unsigned long long size) override { disk_.bytes.resize(static_cast<size_t>(size)); }

private:
    Disk& disk_;
};

/// A chunk or list that a strict walk has found.
struct Chunk {
    std::string id; ///< of a list its type
    size_t at;      ///< of the chunk header
    size_t size;    ///< of the data
};

template <class Number>
Number number(const std::string& bytes, size_t at) {
    Number value{};
    if (at + sizeof(value) <= bytes.size()) {
        std::memcpy(&value, &bytes[at], sizeof(value));
    }
    return value;
}

/// Every chunk between `at` and `end`, which the chunks must fill exactly, with the contents of lists; ends
/// with a chunk "broken" where the structure breaks.
inline void walk(const std::string& bytes, size_t at, size_t end, std::vector<Chunk>& found) {
    while (at < end) {
        const std::string id = bytes.substr(at, 4);
        const size_t size = number<std::uint32_t>(bytes, at + 4);
        const size_t next = at + 8 + size + size % 2;
        if (end - at < 8 || next > end || next > bytes.size()) {
            return found.push_back({"broken", at, size});
        }
        const bool list = id == "RIFF" || id == "LIST";
        found.push_back({list ? bytes.substr(at + 8, 4) : id, at, size});
        if (list) {
            walk(bytes, at + 12, next, found);
        }
        at = next;
    }
}

inline std::vector<Chunk> walk(const std::string& bytes) {
    std::vector<Chunk> found;
    walk(bytes, 0, bytes.size(), found);
    return found;
}

} // namespace avi
