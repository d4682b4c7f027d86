#include "bench/frame_buffers.h"

#include "bench/statistics.h"
#include "bench/stopwatch.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace {
constexpr auto page = std::align_val_t{4096};
}

void FrameBuffers::Free::operator()(unsigned char* buffer) const {
    operator delete[](buffer, page);
}

FrameBuffers::FrameBuffers(size_t count, size_t size) : size_(size) {
    std::uint32_t value = 1;
    for (size_t i = 0; i < count; ++i) {
        buffers_.emplace_back(new (page) unsigned char[size]);
        for (size_t k = 0; k < size; ++k) {
            value = value * 1664525u + 1013904223u;
            buffers_.back()[k] = static_cast<unsigned char>(value >> 24);
        }
    }
}

double coldCopy_s(size_t size) {
    constexpr size_t untouchedBytes = 100'000'000;
    constexpr int rounds = 3;
    const size_t count = untouchedBytes / size;
    const FrameBuffers from(count, size);
    const FrameBuffers to(count, size);
    std::vector<double> copies;
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < count; ++i) {
            const Stopwatch watch;
            std::memcpy(to[i], from[i], size);
            copies.push_back(watch.seconds());
        }
    }
    return median(copies);
}
