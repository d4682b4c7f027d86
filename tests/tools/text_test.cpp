#include "tools/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, LinesFitTheTerminal) {
    const std::string name = "reading 'R:\\long folder\\試合の録画.avi'";
    const std::string rest = ": 1.0 of 2.0 MB, 50 %";
    for (size_t columns = 0; columns < 90; ++columns) {
        const std::string line = dvrec::fitted(name, rest, columns);
        EXPECT_LE(dvrec::columnsOf(line), columns);
        EXPECT_TRUE(columns < 60 || line == name + rest) << columns;
        EXPECT_TRUE(columns < 45 || line.ends_with(rest)) << line;
        EXPECT_TRUE(columns < 45 || line.find(".avi'") != std::string::npos) << line;
        EXPECT_EQ(line.find("\xEF\xBF\xBD"), std::string::npos);
        EXPECT_GT(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, (line + "x").c_str(), -1, nullptr, 0), 0)
            << "no character is cut";
    }
}

TEST(Text, LongNamesGetThePrefixAndPeopleDoNotSeeIt) {
    const std::wstring deep(300, L'n');
    for (const auto& [name, opened] : {std::pair(L"C:\\" + deep, L"\\\\?\\C:\\" + deep),
                                       {L"\\\\server\\share\\" + deep, L"\\\\?\\UNC\\server\\share\\" + deep},
                                       {L"C:\\short", L"C:\\short"},
                                       {L"\\\\?\\C:\\" + deep, L"\\\\?\\C:\\" + deep}}) {
        EXPECT_EQ(dvrec::openable(name), opened);
        EXPECT_EQ(dvrec::shown(opened), dvrec::shown(name));
    }
    EXPECT_EQ(dvrec::utf8Name(L"\\\\?\\UNC\\server\\a"), "\\\\server\\a");
}

} // namespace
