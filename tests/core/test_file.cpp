#include "core/daytime.h"
#include "own_file.h"

#include <climits>
#include <cstring>
#include <vector>

using vcore::file;
using vcore::str;

namespace {

class FileTest : public OwnFile {};

} // namespace

TEST_F(FileTest, ALogIsCreatedAnewAndTakesNarrowLines) {
    write("an earlier log that is longer");
    file log(name.c_str(), CREATE_ALWAYS);
    EXPECT_TRUE(log.exist());
    EXPECT_FALSE(log.opened());
    EXPECT_FALSE(log.writeLine(L"lost"));
    ASSERT_TRUE(log.open(nullptr));
    EXPECT_EQ(log.size(), 0u);
    EXPECT_TRUE(log.writeLine(L"one\r\n"));
    EXPECT_TRUE(log.writeLine(L"t\u00e9o\u4e2d\nnot this"));
    EXPECT_EQ(content(), "one\r\nt\xe9o?\n") << "readable while it is open";
    ASSERT_TRUE(log.reopen());
    EXPECT_EQ(log.size(), 10u) << "reopening keeps what was written";
    EXPECT_TRUE(log.open(nullptr));
    EXPECT_EQ(log.size(), 0u);
}

TEST_F(FileTest, ReadsNarrowLinesUpToTheDelimiter) {
    const std::string longLine(1500, 'x');
    write("a\r\n\nt\xe9o\n" + longLine + "\nlast");
    file in(name.c_str());
    ASSERT_TRUE(in.open(nullptr));
    EXPECT_FALSE(in.unicode());
    str line;
    for (const std::wstring& expected :
         std::vector<std::wstring>{L"a\r", L"", L"t\u00e9o", std::wstring(1500, L'x'), L"last"}) {
        EXPECT_TRUE(in.readLine(line));
        EXPECT_EQ(line, expected.c_str());
    }
    EXPECT_FALSE(in.readLine(line));
    EXPECT_EQ(in.remain(), 0u);
}

TEST_F(FileTest, WideTextHasAByteOrderMark) {
    {
        file out(name.c_str(), CREATE_ALWAYS, true);
        ASSERT_TRUE(out.open(nullptr));
        EXPECT_TRUE(out.writeLine(L"\u4e2d\u0a0d\u0d0a\n"));
        EXPECT_TRUE(out.writeLine(L"b"));
    }
    EXPECT_EQ(content(), std::string("\xff\xfe\x2d\x4e\x0d\x0a\x0a\x0d\n\0b\0", 12));
    file in(name.c_str());
    ASSERT_TRUE(in.open(nullptr));
    EXPECT_TRUE(in.unicode());
    str line;
    EXPECT_TRUE(in.readLine(line));
    EXPECT_EQ(line, L"\u4e2d\u0a0d\u0d0a") << "the delimiter is a whole character";
    EXPECT_TRUE(in.readLine(line));
    EXPECT_EQ(line, L"b");
    EXPECT_FALSE(in.readLine(line));
}

TEST_F(FileTest, TakesOverAHandleAndSeeksBeyond4GB) {
    file f;
    EXPECT_FALSE(f.attach(nullptr) || f.attach(INVALID_HANDLE_VALUE) || f.open(nullptr));
    EXPECT_FALSE(f.seek(0) || f.flush() || f.truncate() || f.wait(0));
    const HANDLE handle = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_FLAG_NO_BUFFERING, nullptr);
    ASSERT_TRUE(f.attach(handle));
    EXPECT_TRUE(f.opened() && f.wait(0));
    EXPECT_EQ(f.handle(), handle);

    alignas(4096) static char block[4096];
    std::memset(block, 'b', sizeof block);
    constexpr unsigned long long distant = 5ull << 30;
    ASSERT_TRUE(f.seek(distant));
    unsigned long done = 0;
    ASSERT_TRUE(f.write(block, sizeof block, &done));
    EXPECT_EQ(done, sizeof block);
    EXPECT_TRUE(f.flush());
    EXPECT_EQ(f.size(), distant + sizeof block);
    EXPECT_FALSE(f.read(block, sizeof block, &done)) << "at the end";
    ASSERT_TRUE(f.seek(distant));
    std::memset(block, 0, sizeof block);
    ASSERT_TRUE(f.read(block, sizeof block, nullptr));
    EXPECT_EQ(block[4095], 'b');

    ASSERT_TRUE(f.seek(4096));
    EXPECT_TRUE(f.truncate());
    EXPECT_EQ(f.size(), 4096u);
    EXPECT_EQ(f.detach(), handle);
    EXPECT_FALSE(f.opened());
    EXPECT_TRUE(CloseHandle(handle));
}

TEST_F(FileTest, ReportsShortReadsOnlyToThoseWhoCountAndRefusesEndlessNames) {
    write("12345");
    file f(name.c_str());
    ASSERT_TRUE(f.open(nullptr));
    char bytes[10];
    unsigned long done = 0;
    EXPECT_TRUE(f.read(bytes, 10, &done));
    EXPECT_EQ(done, 5u);
    EXPECT_TRUE(f.seek(1));
    EXPECT_FALSE(f.read(bytes, 10, nullptr));
    EXPECT_FALSE(file(std::wstring(70000, L'x').c_str()).open(nullptr));
}

TEST_F(FileTest, CopiesWhatRemains) {
    write(std::string(100000, 'a') + "end");
    file source(name.c_str());
    ASSERT_TRUE(source.open(nullptr));
    ASSERT_TRUE(source.seek(30000));
    const std::wstring copyName = name + L".copy";
    file copy(copyName.c_str(), CREATE_ALWAYS);
    ASSERT_TRUE(copy.open(nullptr));
    EXPECT_TRUE(source.copyTo(copy));
    EXPECT_EQ(copy.size(), 70003u);
    vcore::daytime created(0, false);
    EXPECT_TRUE(copy.getCreationTime(created));
    EXPECT_LT(vcore::daytime::diff_secs(created.count(), vcore::daytime().count()), 60.0);
    copy.close();
    source.close();
    MoveFileExW(copyName.c_str(), name.c_str(), MOVEFILE_REPLACE_EXISTING);
    EXPECT_FALSE(copy.exist());
    EXPECT_EQ(content(), std::string(70000, 'a') + "end");
}

TEST_F(FileTest, OpensAsItWasTold) {
    const struct {
        unsigned long creation;
        bool opensMissing, opensExisting;
        unsigned long long sizeAfter;
    } cases[] = {{CREATE_NEW, true, false, 3},        {CREATE_ALWAYS, true, true, 0},
                 {OPEN_EXISTING, false, true, 3},     {OPEN_ALWAYS, true, true, 3},
                 {TRUNCATE_EXISTING, false, true, 0}, {99, false, false, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.creation);
        DeleteFileW(name.c_str());
        EXPECT_EQ(file(name.c_str(), c.creation).open(nullptr), c.opensMissing);
        write("abc");
        EXPECT_EQ(file(name.c_str(), c.creation).open(nullptr), c.opensExisting);
        EXPECT_EQ(content().size(), c.sizeAfter);
    }
    write("abc");
    file reader(name.c_str(), OPEN_EXISTING, false, GENERIC_READ);
    EXPECT_TRUE(reader.open(nullptr) && reader.reopen() && reader.remain() == 3u);
    EXPECT_FALSE(reader.write("x", 1, nullptr) || reader.writeLine(L"x") || reader.truncate());
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileTest, ReadsLinesBeyond4GBAndNowhereElse) {
    constexpr unsigned long long distant = (4ull << 30) - 3;
    file f(name.c_str(), CREATE_ALWAYS);
    ASSERT_TRUE(f.open(nullptr) && f.write("begin", 5, nullptr) && f.seek(distant));
    EXPECT_TRUE(f.writeLine(L"distant\n") && f.writeLine(L"more"));
    EXPECT_EQ(f.position(), distant + 12);
    EXPECT_FALSE(f.seek(ULLONG_MAX) && f.write("x", 1, nullptr)) << "no file is as long";
    char byte = 0;
    EXPECT_FALSE(f.read(&byte, 1, nullptr) || f.read(nullptr, 1, nullptr) || f.write(nullptr, 1, nullptr));
    EXPECT_EQ(f.size(), distant + 12);
    str line;
    EXPECT_TRUE(f.seek(distant) && f.remain() == 12u && f.readLine(line));
    EXPECT_EQ(line, L"distant");
    EXPECT_FALSE(f.copyTo(f));
    const std::wstring copyName = name + L".copy";
    {
        file copy(copyName.c_str(), CREATE_ALWAYS);
        EXPECT_TRUE(copy.open(nullptr) && f.copyTo(copy) && copy.seek(0) && copy.readLine(line));
    }
    EXPECT_EQ(line, L"more");
    DeleteFileW(copyName.c_str());
    EXPECT_TRUE(f.seek(5) && f.truncate() && f.seek(0) && f.readLine(line));
    EXPECT_EQ(line, L"begin");
}
