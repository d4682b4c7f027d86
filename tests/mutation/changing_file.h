/// @file
/// A file that holds one content after the other.
#pragma once

#include "marvo.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

/// A file that holds one content after the other; only what differs is written. Removed at the end.
class ChangingFile {
public:
    explicit ChangingFile(const wchar_t* name)
        : name_(name), file_(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                         CREATE_ALWAYS, 0, nullptr)) {}
    ~ChangingFile() {
        file_.reset();
        DeleteFileW(name_.c_str());
    }

    const wchar_t* name() const { return name_.c_str(); }

    void put(std::string_view bytes) {
        constexpr size_t block = 0x4000;
        for (size_t at = 0; at < bytes.size(); at += block) {
            const std::string_view part = bytes.substr(at, block);
            if (at + part.size() > held_.size() || held_.compare(at, part.size(), part) != 0) {
                DWORD done = 0;
                moveTo(at);
                ASSERT_TRUE(
                    WriteFile(file_.get(), part.data(), static_cast<DWORD>(part.size()), &done, nullptr));
            }
        }
        if (bytes.size() < held_.size()) {
            moveTo(bytes.size());
            ASSERT_TRUE(SetEndOfFile(file_.get()));
        }
        held_ = bytes;
    }

private:
    void moveTo(size_t offset) {
        LARGE_INTEGER position{};
        position.QuadPart = static_cast<long long>(offset);
        ASSERT_TRUE(SetFilePointerEx(file_.get(), position, nullptr, FILE_BEGIN));
    }

    std::wstring name_;
    vcore::handle file_;
    std::string held_;
};
