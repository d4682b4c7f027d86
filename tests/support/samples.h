/// @file
/// Frames with known bytes, media samples of them, and waiting.
#pragma once

#include "marvo.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace samples {

constexpr unsigned long palSize = 144000;
constexpr unsigned long ntscSize = 120000;

/// Initialises COM for the test's thread.
struct Com {
    Com() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    ~Com() { CoUninitialize(); }
};

/// Bytes of a frame that differ for every `seed`.
inline std::vector<unsigned char> bytes(std::uint32_t seed, unsigned long size = palSize) {
    std::vector<unsigned char> data(size);
    std::uint32_t value = seed * 2654435761u + 1;
    for (auto& byte : data) {
        value = value * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(value >> 24);
    }
    return data;
}

/// Whether a frame's bytes are those of `seed`.
inline bool holds(const unsigned char* data, std::uint32_t seed, unsigned long size = palSize) {
    return std::memcmp(data, bytes(seed, size).data(), size) == 0;
}

/// The time that `action` takes, in ms.
template <class Action>
ULONGLONG elapsed_ms(Action action) {
    const ULONGLONG begin = GetTickCount64();
    action();
    return GetTickCount64() - begin;
}

/// What most of the values do not exceed, as a busy machine makes single ones long.
inline ULONGLONG median(std::vector<ULONGLONG> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Hands out media samples of the system's allocator, one at a time.
class Source {
public:
    explicit Source(unsigned long size = palSize) : size_(size) {
        allocator_.create();
        allocator_.init(size, 4, 0, 1);
    }

    /// A sample with the bytes of `seed`; the caller owns its one reference.
    IMediaSample* sample(std::uint32_t seed) {
        IMediaSample* made = nullptr;
        if (!allocator_.getSample(&made, 0, 1)) {
            return nullptr;
        }
        BYTE* buffer = nullptr;
        made->GetPointer(&buffer);
        std::memcpy(buffer, bytes(seed, size_).data(), size_);
        return made;
    }

    /// Adds the frame of `seed` to a store.
    bool addTo(dvFrameStore& store, std::uint32_t seed) {
        IMediaSample* made = sample(seed);
        const bool added = store.add(made);
        made->Release();
        return added;
    }

private:
    Com com_;
    unsigned long size_;
    vvideo::dvAlloc allocator_;
};

/// Waits until `condition` holds, at most `limit_ms`; whether it does. The limit is long, since a busy
/// machine may stand still for seconds: it is no measure of speed.
template <class Condition>
bool eventually(Condition condition, unsigned long limit_ms = 30000) {
    const ULONGLONG end = GetTickCount64() + limit_ms;
    while (!condition()) {
        if (GetTickCount64() > end) {
            return false;
        }
        Sleep(2);
    }
    return true;
}

} // namespace samples
