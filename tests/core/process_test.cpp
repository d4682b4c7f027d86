#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

using vcore::buf;
using vcore::str;
using vwin::winprocess;

namespace {

constexpr unsigned long patience_ms = 60000;

/// A command line for the program that lies in the directory `bin` beside that of this one.
std::wstring child(const std::wstring& arguments) {
    std::wstring path(1024, 0);
    path.resize(GetModuleFileNameW(nullptr, path.data(), 1024));
    path.resize(path.find_last_of(L'\\'));
    return L" \t\"" + path + L"\\..\\bin\\marvo-test-child\" " + arguments;
}

class ProcessTest : public testing::Test {
protected:
    ~ProcessTest() override { process.stop(0); }

    // The log files stay in the tests' scratch directory: the system may hold them beyond the child's end.
    bool console(const std::wstring& arguments) { return process.startConsole(child(arguments).c_str()); }
    /// Everything that the child writes until it ends, or until `wanted` is there.
    std::wstring output(const std::wstring& wanted = L"") {
        std::wstring all;
        str text;
        samples::eventually([&] {
            const bool ended = !process.running();
            const bool more = process.readConsole(text);
            all += more ? text.oleStr() : L"";
            return (ended && !more) || (!wanted.empty() && all.find(wanted) != all.npos);
        });
        return all;
    }
    unsigned long result() const {
        unsigned long code = 0;
        return process.exitCode(code) ? code : 12345;
    }

    winprocess process;
};

} // namespace

TEST_F(ProcessTest, CapturesAConsoleThatNobodyReads) {
    constexpr int lines = 50000;
    ASSERT_TRUE(console(L"write " + std::to_wstring(lines)));
    EXPECT_TRUE(process.wait(patience_ms)) << "it does not wait for a reader";
    EXPECT_EQ(result(), 7u);
    const std::wstring all = output();
    EXPECT_EQ(std::count(all.begin(), all.end(), L'\n'), lines) << "nothing is lost or written over";
    EXPECT_TRUE(process.logName().startsWith(L"log") && process.logName().endsWith(L".txt"));
}

TEST_F(ProcessTest, HandsOverArgumentsAndReusesTheObject) {
    ASSERT_TRUE(console(L"echo \"a b\" t\u00e9 "));
    EXPECT_EQ(output(), L"<a b><t\u00e9>");
    EXPECT_EQ(result(), 4u) << "its input is empty";
    const str first(process.logName());
    ASSERT_TRUE(console(L"write 1") && process.logName() != first);
    EXPECT_EQ(output(L"\n"), L"line 000000\r\n");
}

TEST_F(ProcessTest, InheritsHandles) {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    const vcore::handle event(CreateEventW(&inherit, TRUE, FALSE, nullptr));
    const auto number = std::to_wstring(reinterpret_cast<INT_PTR>(event.get()));
    ASSERT_TRUE(process.start(child(L"set " + number).c_str()));
    EXPECT_TRUE(process.wait(patience_ms) && process.logName().len() == 0 && result() == 0u);
    EXPECT_TRUE(vcore::event::wait(event.get(), 0));
}

TEST_F(ProcessTest, IsStoppedAndRefusesWhatItCannotDo) {
    EXPECT_TRUE(process.wait(0) && process.stop(0) && !process.running() && result() == 12345u);
    for (const wchar_t* bad :
         {static_cast<const wchar_t*>(nullptr), L"", L" \t\n", L"\"", L"no-such-program"}) {
        EXPECT_FALSE(process.start(bad) || process.startConsole(bad));
    }
    EXPECT_FALSE(process.start((child(L"") + std::wstring(100000, L'x')).c_str()) || process.logName().len());

    ASSERT_TRUE(console(L"sleep 600000"));
    EXPECT_EQ(output(L"ready"), L"ready") << "read while it runs";
    EXPECT_TRUE(process.running() && !process.wait(1) && result() == 12345u && process.id() != 0u);
    EXPECT_FALSE(process.start(child(L"echo").c_str()) || process.startConsole(child(L"echo").c_str()));
    EXPECT_TRUE(process.stop(10) && !process.running() && result() == ULONG_MAX);
}

TEST(Lib, FindsSymbolsAndResources) {
    vcore::lib library;
    ULONG(WINAPI * version)(const wchar_t*, DWORD*) = nullptr;
    EXPECT_FALSE(library.open(nullptr) || library.open(L"no-such-library") || library.opened());
    EXPECT_FALSE(library.symbol(L"GetTickCount") || library.storeSymbol(L"", version));
    ASSERT_TRUE(library.open(L"version.dll") && library.storeSymbol(L"GetFileVersionInfoSizeW", version));
    EXPECT_GT(version(L"kernel32.dll", nullptr), 0u);
    EXPECT_FALSE(library.symbol(L"getfileversioninfosizew") || library.symbol(nullptr));
    ASSERT_TRUE(vcore::lib::module(L"version.dll") && library.open(L"kernel32.dll", true));
    EXPECT_FALSE(library.symbol(L"GetTickCount")) << "only resources";
    buf bytes("x", 1);
    const wchar_t* const first = MAKEINTRESOURCEW(1);
    constexpr long versionType = 16;
    for (const long type : {0l, -1l, 65536l + versionType, 4711l}) {
        EXPECT_FALSE(library.loadResource(first, type, bytes));
    }
    EXPECT_FALSE(library.loadResource(L"no-such-resource", versionType, bytes) || bytes.size() != 1);
    ASSERT_TRUE(library.loadResource(first, versionType, bytes) && bytes.size() > 44);
    EXPECT_EQ(*reinterpret_cast<const DWORD*>(bytes.data() + 40), 0xFEEF04BDu) << "a version block";
    library.close();
    EXPECT_FALSE(library.loadResource(first, versionType, bytes)) << "of this program";
}

TEST(Lib, BuffersHoldWhatTheyAreGiven) {
    buf bytes("abc", 3);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(bytes.append(bytes.data() + 1, bytes.size() - 1)) << "from itself";
    }
    ASSERT_EQ(bytes.size(), 2u * 1024 + 1);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes.data()), 7), "abcbcbc");
    EXPECT_TRUE(bytes.set(bytes.data() + 2, 2) && bytes.resize(3));
    EXPECT_STREQ(reinterpret_cast<char*>(bytes.data()), "cb");
    EXPECT_FALSE(bytes.resize(ULONG_MAX) || bytes.append("x", ULONG_MAX));
    EXPECT_TRUE(bytes.append(nullptr, 5) && bytes.size() == 3u && buf(nullptr, 7).size() == 0);
    buf copy(bytes);
    copy = *&copy;
    bytes.clear();
    EXPECT_TRUE(copy.size() == 3u && bytes.size() == 0u && !bytes.data());
}
