#include "tests/support/import_patch.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <utility>

using namespace vcore;

namespace {

/// A name of this test alone, with letters that no ANSI code page of Western Europe has; the file is removed
/// at the end.
class FileTest : public testing::Test {
protected:
    ~FileTest() override { DeleteFileW(name.c_str()); }

    void write(const std::string& bytes) {
        file out(name.c_str(), CREATE_ALWAYS);
        ASSERT_TRUE(out.open(nullptr) &&
                    out.write(bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr));
    }
    std::string content() {
        file in(name.c_str());
        EXPECT_TRUE(in.open(nullptr) && in.seek(0));
        std::string bytes(static_cast<std::size_t>(in.size()), 0);
        EXPECT_TRUE(in.read(bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr));
        return bytes;
    }

    const std::wstring name = L"test-\u0436\u4e2d-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
};

using IniFileTest = FileTest;

BOOL WINAPI writeNothing(HANDLE, const void*, DWORD, DWORD* done, OVERLAPPED*) {
    *done = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

} // namespace

TEST_F(FileTest, ALogIsCreatedAnewAndTakesNarrowLines) {
    write("an earlier log that is longer");
    file log(name.c_str(), CREATE_ALWAYS);
    EXPECT_TRUE(log.exist() && !log.opened() && !log.writeLine(L"lost"));
    ASSERT_TRUE(log.open(nullptr));
    EXPECT_TRUE(log.writeLine(L"one\r\n") && log.writeLine(L"t\u00e9o\u4e2d\nnot this"));
    EXPECT_EQ(content(), "one\r\nt\xe9o?\n") << "readable while it is open";
    ASSERT_TRUE(log.reopen());
    EXPECT_EQ(log.size(), 10u) << "reopening keeps what was written";
    EXPECT_TRUE(log.open(nullptr) && log.size() == 0u);
    daytime created(0, false);
    EXPECT_TRUE(log.getCreationTime(created));
    EXPECT_LT(daytime::diff_secs(created.count(), daytime().count()), 60.0);
}

TEST_F(FileTest, ReadsNarrowLinesUpToTheDelimiter) {
    write("a\r\n\nt\xe9o\nlast");
    file in(name.c_str());
    ASSERT_TRUE(in.open(nullptr) && !in.unicode());
    str line;
    for (const wchar_t* expected : {L"a\r", L"", L"t\u00e9o", L"last"}) {
        EXPECT_TRUE(in.readLine(line) && line == expected);
    }
    EXPECT_TRUE(!in.readLine(line) && in.remain() == 0);
}

TEST_F(FileTest, WideTextHasAByteOrderMark) {
    {
        file out(name.c_str(), CREATE_ALWAYS, true);
        EXPECT_TRUE(out.open(nullptr) && out.writeLine(L"\u4e2d\u0a0d\u0d0a\n") && out.writeLine(L"b"));
    }
    EXPECT_EQ(content(), std::string("\xff\xfe\x2d\x4e\x0d\x0a\x0a\x0d\n\0b\0", 12));
    file in(name.c_str());
    ASSERT_TRUE(in.open(nullptr) && in.unicode());
    str line;
    EXPECT_TRUE(in.readLine(line) && line == L"\u4e2d\u0a0d\u0d0a") << "the delimiter is a whole character";
    EXPECT_TRUE(in.readLine(line) && line == L"b" && !in.readLine(line));
}

TEST_F(FileTest, TakesOverAHandleAndGivesItBack) {
    file f;
    EXPECT_FALSE(f.attach(nullptr) || f.attach(INVALID_HANDLE_VALUE) || f.open(nullptr));
    EXPECT_FALSE(f.seek(0) || f.flush() || f.truncate() || f.wait(0));
    const HANDLE handle = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_FLAG_NO_BUFFERING, nullptr);
    ASSERT_TRUE(f.attach(handle) && f.opened() && f.wait(0) && f.handle() == handle);
    alignas(4096) static char block[4096];
    std::memset(block, 'b', sizeof block);
    unsigned long done = 0;
    EXPECT_TRUE(f.seek(4096) && f.write(block, sizeof block, &done) && done == sizeof block && f.flush());
    EXPECT_FALSE(f.read(block, sizeof block, &done)) << "at the end";
    std::memset(block, 0, sizeof block);
    EXPECT_TRUE(f.seek(4096) && f.read(block, sizeof block, nullptr) && block[4095] == 'b');
    EXPECT_TRUE(f.detach() == handle && !f.opened() && CloseHandle(handle));
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
    char bytes[10];
    unsigned long done = 0;
    EXPECT_TRUE(reader.seek(0) && reader.read(bytes, 10, &done) && done == 3 && reader.seek(1));
    EXPECT_FALSE(reader.read(bytes, 10, nullptr)) << "short reads are told only to those who count";
    EXPECT_FALSE(file(std::wstring(70000, L'x').c_str()).open(nullptr));
}

TEST_F(FileTest, ReadsLinesBeyond4GBAndNowhereElse) {
    constexpr unsigned long long distant = (4ull << 30) - 3;
    file f(name.c_str(), CREATE_ALWAYS);
    ASSERT_TRUE(f.open(nullptr) && f.write("begin", 5, nullptr) && f.seek(distant));
    const std::wstring more(40000, L'm');
    EXPECT_TRUE(f.writeLine(L"distant\n") && f.writeLine((more + L'\n').c_str()) &&
                f.writeLine(more.c_str()));
    EXPECT_EQ(f.position(), distant + 80009);
    EXPECT_FALSE(f.seek(ULLONG_MAX) && f.write("x", 1, nullptr)) << "no file is as long";
    char byte = 0;
    EXPECT_FALSE(f.read(&byte, 1, nullptr) || f.read(nullptr, 1, nullptr) || f.write(nullptr, 1, nullptr));
    EXPECT_EQ(f.size(), distant + 80009);
    str line;
    EXPECT_TRUE(f.seek(distant) && f.remain() == 80009u && f.readLine(line) && !f.copyTo(f));
    EXPECT_EQ(line, L"distant");
    file copy;
    ASSERT_TRUE(copy.attach(CreateFileW((name + L".copy").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr)));
    EXPECT_TRUE(f.copyTo(copy) && copy.seek(40001) && copy.readLine(line) && line == more.c_str());
    EXPECT_TRUE(CloseHandle(copy.detach()) && f.seek(5) && f.truncate() && f.seek(0) && f.readLine(line) &&
                line == L"begin");
}

TEST_F(IniFileTest, LoadsEntriesOfSections) {
    write("top = 1\r\n"
          "[video]\n  deinterlace = 1 \n; no = 1\n// no = 1\nrem x\nREMARK = 1\nremote = 1\n=5\nno value\n\n"
          "quoted = \" a = b \"\nopen = \"cut\nempty =\nsame = 1\nt\xe9xt=\xe4\n"
          "[dv\nlogging=on\n[video]\nSAME = 2\n[]\nlast=9");
    iniFile ini(name.c_str());
    const wchar_t* const expected[][2] = {
        {L"VIDEO.DEINTERLACE", L"1"},    {L"top", L"1"},        {L"video.quoted", L" a = b "},
        {L"video.open", L"cu"},          {L"video.empty", L""}, {L"video.same", L"2"},
        {L"video.t\u00e9xt", L"\u00e4"}, {L"d.logging", L"on"}, {L"last", L"9"}};
    for (const auto& e : expected) {
        EXPECT_TRUE(ini.defined(e[0])) << str(e[0]).getStr();
        EXPECT_STREQ(ini.getS(e[0]), e[1]) << str(e[0]).getStr();
    }
    for (const wchar_t* ignored : {L"video.no", L"video.REMARK", L"video.", L"video.no value"}) {
        EXPECT_FALSE(ini.defined(ignored)) << str(ignored).getStr();
    }
    EXPECT_EQ(ini.section(1), L"d") << "whatever is last is taken for the bracket";
    EXPECT_TRUE(ini.section(2) == L"video" && ini.section(4) == L"");
    const iniFile copy(ini);
    EXPECT_TRUE(!ini.load((name + L"x").c_str()) && ini.defined(L"top")) << "a missing file changes nothing";
    ini.create();
    EXPECT_FALSE(ini.defined(L"top") || ini.save(nullptr) || ini.load(nullptr) || !copy.defined(L"top"));
    EXPECT_TRUE(ini.filename().endsWith(L"\\marvo-tests-core.ini")) << ini.filename().getStr();
}

TEST_F(IniFileTest, LookupsWithADefaultCreateEntriesAndNamesAreRemovedByTheirBeginning) {
    iniFile ini(nullptr);
    EXPECT_TRUE(ini.get(L"x").isEmpty() && ini.get(L"n", varI(3)).getI() == 3);
    EXPECT_TRUE(str(ini.getS(L"video.b", L"7")) == L"7" && str(ini.getS(L"Video.B", L"8")) == L"7");
    ini.set(L"video.b", ini.get(L"VIDEO.B"));
    EXPECT_STREQ(ini.getS(L"video.b"), L"7");
    ini[L"vid"].setB(true);
    ini.set(nullptr, L"y");
    EXPECT_STREQ(ini.getS(L""), L"y");
    ini.remove(L"video.");
    EXPECT_TRUE(ini.defined(L"VID") && !ini.defined(L"video.b"));
    ini.remove(L"V");
    ini.remove(nullptr);
    EXPECT_TRUE(ini.defined(L"n") && !ini.defined(L"vid")) << "null removes nothing";
    ini.remove(L"");
    EXPECT_FALSE(ini.defined(L"n"));
}

TEST_F(IniFileTest, SavesTopLevelFirstAndSectionsAsTheyCome) {
    const auto savedText = [this] {
        const std::string bytes = content();
        const auto* const behindMark = reinterpret_cast<const wchar_t*>(bytes.data()) + 1;
        return std::wstring(behindMark, bytes.size() / sizeof(wchar_t) - 1);
    };
    iniFile ini(nullptr);
    ini.set(L"b.y", varI(2));
    ini.set(L"top", varB(true));
    ini.set(L"a.x.z", L"\u4e2d");
    ini.set(L"B.x", L"cut\nhere");
    ASSERT_TRUE(ini.save(name.c_str()));
    EXPECT_EQ(savedText(),
              L"  top = TRUE\r\n\r\n[b]\r\n  y = 2\r\n\r\n[a]\r\n  x.z = \u4e2d\r\n\r\n[B]\r\n  x = cut\n");
    ini.sort();
    SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_STREQ(iniFile(name.c_str()).getS(L"a.x.z"), L"\u4e2d");
    ASSERT_TRUE(ini.save(nullptr)) << "read-only files are replaced, too";
    EXPECT_EQ(savedText(),
              L"  top = TRUE\r\n\r\n[a]\r\n  x.z = \u4e2d\r\n\r\n[B]\r\n  x = cut\n\r\n[b]\r\n  y = 2\r\n");
}

TEST_F(IniFileTest, ReadsEveryEncodingAndLineEnd) {
    for (const std::wstring end : {L"\n", L"\r\n", L"\r"}) {
        const std::wstring text =
            L"\ufeff[v]" + end + L"t\u00e9xt = \u4e2d" + end + end + L"[w]" + end + L"x=1";
        const std::string little(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
        std::string big(little);
        for (std::size_t i = 0; i < big.size(); i += 2) {
            std::swap(big[i], big[i + 1]);
        }
        const str wide(text.c_str());
        str utf8;
        utf8.encodeUTF8(&wide);
        for (const std::string& bytes : {little + "\n", big, std::string(utf8.getStr(), utf8.len())}) {
            write(bytes);
            const iniFile ini(name.c_str());
            EXPECT_STREQ(ini.getS(L"v.t\u00e9xt"), L"\u4e2d");
            EXPECT_STREQ(ini.getS(L"w.x"), L"1");
        }
    }
    write("a = 1\rb = \xe4\r");
    EXPECT_STREQ(iniFile(name.c_str()).getS(L"b"), L"\u00e4");
}

TEST_F(IniFileTest, WhatWasSetIsReadBack) {
    iniFile ini(nullptr);
    ini.set(L"zero", 0);
    ini.set(L"yes", true);
    EXPECT_TRUE(ini.get(L"zero").isI() && ini.get(L"yes").isB());
    ini.set(L"large", varI64(LLONG_MIN + 1));
    ini.set(L"small", -1.5e-12);
    ini.set(L"third", 1.0 / 3);
    ASSERT_TRUE(ini.save(name.c_str()));
    const iniFile back(name.c_str());
    EXPECT_TRUE(back.getS(L"zero") == std::wstring(L"0") && back.get(L"yes").getB());
    EXPECT_TRUE(back.get(L"third").getF() == 1.0 / 3);
    EXPECT_TRUE(back.get(L"large").getI64() == LLONG_MIN + 1 && back.get(L"small").getF() == -1.5e-12);
}

TEST_F(IniFileTest, AFileThatCannotBeReplacedStays) {
    write("[old]\nkey = 1");
    iniFile ini(name.c_str());
    ini.set(L"old.key", L"2");
    const auto isAlone = [&] {
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW((name + L"*").c_str(), &found);
        return !FindNextFileW(search, &found) && FindClose(search);
    };
    {
        const HMODULE library = engineModule() ? engineModule() : GetModuleHandleW(nullptr);
        const ImportPatch patch(library, "WriteFile", reinterpret_cast<void*>(&writeNothing));
        EXPECT_TRUE(!ini.save(nullptr) && ini.error() == ERROR_DISK_FULL && isAlone());
    }
    {
        file reader(name.c_str(), OPEN_EXISTING, false, GENERIC_READ);
        EXPECT_TRUE(reader.open(nullptr) && !ini.save(nullptr) && ini.error() == ERROR_ACCESS_DENIED);
    }
    EXPECT_EQ(content(), "[old]\nkey = 1");
    EXPECT_TRUE(isAlone() && ini.save(nullptr) && iniFile(name.c_str()).get(L"old.key").getI() == 2);
}

TEST_F(IniFileTest, AnyBytesLeaveTheLinesBehindThemReadable) {
    std::mt19937 random(1);
    const std::string longText(70000, 'k');
    const std::string pieces[] = {"[", "]", "=", "\"", "\n", "\r\n", ".", "rem", "//"};
    for (int round = 0; round < 30; ++round) {
        const bool wide = round % 3 == 0;
        std::string bytes(wide ? "\xff\xfe" : "");
        for (int i = 0; i < 400; ++i) {
            bytes += i % 100 == 99  ? longText
                     : random() % 3 ? pieces[random() % std::size(pieces)]
                                    : std::string(1, static_cast<char>(random()));
        }
        bytes.append(wide ? bytes.size() % 2 : 0, ' ');
        for (const char c : std::string("\n[behind]\nit = 42\n")) {
            wide ? bytes.append({c, 0}) : bytes.append({c});
        }
        write(bytes);
        iniFile ini(name.c_str());
        ASSERT_EQ(ini.get(L"behind.it").getI(), 42) << "round " << round;
        ASSERT_TRUE(ini.save(nullptr));
        ASSERT_EQ(iniFile(name.c_str()).get(L"behind.it").getI(), 42) << "round " << round;
    }
}
