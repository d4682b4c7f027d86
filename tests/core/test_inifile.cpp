#include "core/inifile.h"
#include "own_file.h"

#include <random>

using namespace vcore;

namespace {

class IniFileTest : public OwnFile {
protected:
    /// The text behind the byte order mark.
    std::wstring savedText() {
        const std::string bytes = content();
        return {reinterpret_cast<const wchar_t*>(bytes.data()) + 1, bytes.size() / sizeof(wchar_t) - 1};
    }
};

} // namespace

TEST_F(IniFileTest, LoadsEntriesOfSections) {
    write("top = 1\r\n"
          "[video]\n  deinterlace = 1 \n; no = 1\n// no = 1\nrem x\nREMARK = 1\nremote = 1\n=5\nno value\n\n"
          "quoted = \" a = b \"\nopen = \"cut\nempty =\nsame = 1\nt\xe9xt=\xe4\n"
          "[dv\nlogging=on\n[video]\nSAME = 2\n[]\nlast=9");
    iniFile ini(name.c_str());
    const wchar_t* const expected[][2] = {
        {L"VIDEO.DEINTERLACE", L"1"},    {L"top", L"1"},        {L"video.quoted", L" a = b "},
        {L"video.open", L"cu"},          {L"video.empty", L""}, {L"video.same", L"2"},
        {L"video.t\u00e9xt", L"\u00e4"}, {L"d.logging", L"on"}, {L"last", L"9"},
    };
    for (const auto& e : expected) {
        EXPECT_TRUE(ini.defined(e[0])) << str(e[0]).getStr();
        EXPECT_STREQ(ini.getS(e[0]), e[1]) << str(e[0]).getStr();
    }
    for (const wchar_t* ignored :
         {L"video.no", L"video.REMARK", L"video.remote", L"video.", L"video.no value"})
        EXPECT_FALSE(ini.defined(ignored)) << str(ignored).getStr();
    EXPECT_EQ(ini.section(1), L"d") << "whatever is last is taken for the bracket";
    EXPECT_EQ(ini.section(2), L"video");
    EXPECT_EQ(ini.section(4), L"");
}

TEST_F(IniFileTest, AMissingFileLeavesTheEntries) {
    iniFile ini(nullptr);
    ini.set(L"a", L"1");
    EXPECT_FALSE(ini.load(name.c_str()));
    EXPECT_EQ(ini.filename(), name.c_str());
    EXPECT_STREQ(ini.getS(L"a"), L"1");
    ini.create();
    EXPECT_FALSE(ini.defined(L"a"));
    EXPECT_FALSE(ini.save(nullptr) || ini.load(nullptr));
    EXPECT_TRUE(ini.filename().endsWith(L"\\marvo-tests-core.ini")) << ini.filename().getStr();
}

TEST_F(IniFileTest, LookupsWithADefaultCreateEntries) {
    iniFile ini(nullptr);
    EXPECT_TRUE(ini.get(L"x").isEmpty());
    EXPECT_STREQ(ini.getS(L"a.b", L"7"), L"7");
    EXPECT_STREQ(ini.getS(L"A.B", L"8"), L"7");
    EXPECT_EQ(ini.get(L"n", varI(3)).getI(), 3);
    ini[L"e"].setB(true);
    EXPECT_TRUE(ini.defined(L"E"));
    ini.set(L"a.b", ini.get(L"a.b"));
    EXPECT_STREQ(ini.getS(L"a.b"), L"7");
    ini.set(nullptr, L"y");
    EXPECT_STREQ(ini.getS(L""), L"y");
    const iniFile copy(ini);
    ini.remove(L"");
    EXPECT_FALSE(ini.defined(L"n"));
    EXPECT_STREQ(copy.getS(L"a.b"), L"7");
}

TEST_F(IniFileTest, RemovesByTheBeginningOfTheName) {
    iniFile ini(nullptr);
    for (const wchar_t* entry : {L"dv.a", L"video.a", L"DVD", L"Video.b", L"vid"})
        ini.set(entry, L"1");
    ini.remove(L"video.");
    EXPECT_TRUE(ini.defined(L"vid") && !ini.defined(L"video.a") && !ini.defined(L"video.b"));
    ini.remove(L"dv");
    EXPECT_TRUE(ini.defined(L"vid") && !ini.defined(L"dv.a") && !ini.defined(L"dvd"));
    ini.remove(nullptr);
    EXPECT_TRUE(ini.defined(L"vid"));
}

TEST_F(IniFileTest, SavesTopLevelFirstAndSectionsAsTheyCome) {
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
    ASSERT_TRUE(ini.save(nullptr)) << "read-only files are replaced, too";
    EXPECT_EQ(savedText(),
              L"  top = TRUE\r\n\r\n[a]\r\n  x.z = \u4e2d\r\n\r\n[B]\r\n  x = cut\n\r\n[b]\r\n  y = 2\r\n");
    EXPECT_STREQ(iniFile(name.c_str()).getS(L"a.x.z"), L"\u4e2d");
}

TEST_F(IniFileTest, AnyBytesLeaveTheLinesBehindThemReadable) {
    std::mt19937 random(1);
    const std::string longText(70000, 'k');
    const std::string pieces[] = {"[", "]", "=", "\"", "\n", "\r\n", ".", "rem", "//"};
    for (int round = 0; round < 30; ++round) {
        const bool wide = round % 3 == 0;
        std::string bytes(wide ? "\xff\xfe" : "");
        for (int i = 0; i < 400; ++i)
            if (i % 100 == 99)
                bytes += longText;
            else if (random() % 3)
                bytes += pieces[random() % std::size(pieces)];
            else
                bytes += static_cast<char>(random());
        if (wide && bytes.size() % 2)
            bytes += ' ';
        for (const char c : std::string("\n[behind]\nit = 42\n"))
            wide ? bytes.append({c, 0}) : bytes.append({c});
        write(bytes);
        iniFile ini(name.c_str());
        ASSERT_EQ(ini.get(L"behind.it").getI(), 42) << "round " << round;
        ASSERT_TRUE(ini.save(nullptr));
        ASSERT_EQ(iniFile(name.c_str()).get(L"behind.it").getI(), 42) << "round " << round;
    }
}
