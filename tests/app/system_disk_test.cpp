#include "app/system_disk.h"

#include "marvo.h"

#include <gtest/gtest.h>

TEST(SystemDisk, ReplacesFilesWhole) {
    app::SystemDisk disk;
    wchar_t here[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, here), 0u);
    const std::wstring root = app::joined(here, L"system_disk_test");
    std::wstring deep = root;
    while (deep.size() < 300) {
        deep = app::joined(deep, std::wstring(60, L'\xe4'));
    }
    const std::wstring file = app::joined(deep, L"a.clips");
    std::wstring why;
    std::string text;
    ASSERT_TRUE(disk.makeFolder(deep, why) && disk.makeFolder(deep, why));
    EXPECT_TRUE(!disk.read(file, text, why) && why.find(L"(2)") != std::wstring::npos);
    EXPECT_TRUE(disk.replace(file, "one", why) && disk.replace(file, "t\0wo", why) &&
                disk.read(file, text, why));
    EXPECT_EQ(text, "t");
    EXPECT_EQ(disk.files(deep), std::vector<std::wstring>{L"a.clips"});
    EXPECT_TRUE(!disk.makeFolder(file, why) && !disk.replace(app::joined(file, L"x"), "", why) &&
                !why.empty());
    // A file in use stays as it is, and nothing is left beside it.
    {
        const vcore::handle open(
            CreateFileW((L"\\\\?\\" + file).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(open && !disk.replace(file, "three", why) && !disk.remove(file, why) &&
                    disk.files(deep).size() == 1);
    }
    EXPECT_TRUE(disk.read(file, text, why) && text == "t");
    EXPECT_GT(disk.freeBytes(app::joined(deep, L"not\\there")).value_or(0), 0u);
    EXPECT_TRUE(disk.remove(file, why) && !disk.exists(file));
    for (std::wstring folder = deep; folder.size() >= root.size(); folder = app::folderOf(folder)) {
        EXPECT_TRUE(RemoveDirectoryW((L"\\\\?\\" + folder).c_str()));
    }
}
