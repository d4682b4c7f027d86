/// @file
/// Raw recordings for tests.
#pragma once

#include "tests/support/samples.h"

#include <gtest/gtest.h>

namespace recording {

constexpr unsigned long recordSize = 144384;

/// Appends records `first` to `first + frames - 1` to a raw recording; record k holds the bytes of seed k.
inline void append(const wchar_t* name, unsigned long first, unsigned long frames) {
    vcore::file file(name, OPEN_ALWAYS);
    ASSERT_TRUE(file.open(nullptr));
    ASSERT_TRUE(file.seek(file.size()));
    std::vector<unsigned char> record(recordSize);
    for (unsigned long k = first; k < first + frames; ++k) {
        const std::uint32_t header[2] = {samples::palSize, 400000};
        std::memcpy(record.data(), header, sizeof(header));
        std::memcpy(record.data() + 8, samples::bytes(k).data(), samples::palSize);
        unsigned long written = 0;
        ASSERT_TRUE(file.write(record.data(), recordSize, &written));
    }
}

/// Gives a file that others may have open another size, beyond its end with zeros that take no room.
inline void resize(const wchar_t* name, unsigned long long bytes) {
    const vcore::handle file(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(bytes);
    ASSERT_TRUE(SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.get()));
}

/// A new raw recording of `frames` PAL frames.
inline void write(const wchar_t* name, unsigned long frames) {
    DeleteFileW(name);
    append(name, 0, frames);
}

} // namespace recording
