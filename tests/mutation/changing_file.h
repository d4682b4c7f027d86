/// @file
/// A file that holds one content after the other.
#pragma once

#include "marvo.h"

#include <gtest/gtest.h>

#include <cstring>
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
        constexpr size_t block = 4096;
        size_t from = 0;
        while (from < bytes.size()) {
            size_t to = from;
            while (to < bytes.size() && !holds(bytes, to, std::min(block, bytes.size() - to))) {
                to = std::min(to + block, bytes.size());
            }
            if (to > from) {
                write(bytes, from, to);
            }
            from = to + block;
        }
        if (bytes.size() < held_.size()) {
            cut(bytes.size());
        }
        held_ = bytes;
    }

private:
    bool holds(std::string_view bytes, size_t at, size_t count) const {
        return at + count <= held_.size() && std::memcmp(&bytes[at], &held_[at], count) == 0;
    }

    void moveTo(size_t offset) {
        LARGE_INTEGER position{};
        position.QuadPart = static_cast<long long>(offset);
        ASSERT_TRUE(SetFilePointerEx(file_.get(), position, nullptr, FILE_BEGIN));
    }

    void write(std::string_view bytes, size_t from, size_t to) {
        moveTo(from);
        DWORD done = 0;
        ASSERT_TRUE(WriteFile(file_.get(), &bytes[from], static_cast<DWORD>(to - from), &done, nullptr));
    }

    void cut(size_t size) {
        moveTo(size);
        ASSERT_TRUE(SetEndOfFile(file_.get()));
    }

    std::wstring name_;
    vcore::handle file_;
    std::string held_;
};
