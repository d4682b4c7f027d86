/// @file
/// A file for one test.
#pragma once

#include "core/file.h"

#include <gtest/gtest.h>

#include <string>

/// A name of this test alone, with letters that no ANSI code page of Western Europe has; the file is removed at the end.
class OwnFile : public testing::Test {
protected:
    ~OwnFile() override { DeleteFileW(name.c_str()); }

    void write(const std::string& bytes) {
        vcore::file out(name.c_str(), CREATE_ALWAYS);
        ASSERT_TRUE(out.open(nullptr));
        ASSERT_TRUE(out.write(bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr));
    }
    std::string content() {
        vcore::file in(name.c_str());
        EXPECT_TRUE(in.open(nullptr));
        EXPECT_TRUE(in.seek(0));
        std::string bytes(static_cast<std::size_t>(in.size()), 0);
        EXPECT_TRUE(in.read(bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr));
        return bytes;
    }

    const std::wstring name = L"test-\u0436\u4e2d-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
};
