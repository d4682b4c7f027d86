#include "marvo.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace {

/// Drives as a test describes them.
class Drives : public dvDriveSearch {
public:
    std::map<wchar_t, unsigned long long> room;
    std::map<wchar_t, unsigned long long> oldRecording;
    std::set<wchar_t> removable;

protected:
    bool isFixed(const wchar_t* root) const override {
        return room.count(root[0]) && !removable.count(root[0]);
    }
    unsigned long long freeBytes(const wchar_t* root) const override { return room.at(root[0]); }
    unsigned long long fileLength(const wchar_t* name) const override {
        const auto found = oldRecording.find(name[0]);
        return found != oldRecording.end() && std::wstring(name + 1) == L":\\temp.dv" ? found->second : 0;
    }
};

TEST(DriveSearch, TakesTheFixedDriveWithMostRoom) {
    const struct {
        const char* name;
        std::map<wchar_t, unsigned long long> room, oldRecording;
        std::set<wchar_t> removable;
        const wchar_t* root;
        unsigned long long best;
    } cases[] = {
        {"most room", {{L'C', 10}, {L'D', 30}, {L'E', 20}}, {}, {}, L"D:\\", 30},
        {"a tie goes towards Z", {{L'C', 30}, {L'D', 30}, {L'A', 30}}, {}, {}, L"D:\\", 30},
        {"an old recording counts as room", {{L'C', 10}, {L'D', 30}}, {{L'C', 25}}, {}, L"C:\\", 35},
        {"removable drives do not count", {{L'C', 10}, {L'E', 99}}, {}, {L'E'}, L"C:\\", 10},
        {"none", {}, {}, {}, L"unchanged", 0},
    };
    for (const auto& c : cases) {
        Drives drives;
        drives.room = c.room;
        drives.oldRecording = c.oldRecording;
        drives.removable = c.removable;
        vcore::str root(L"unchanged");
        EXPECT_EQ(drives.best(root, L"temp.dv"), c.best) << c.name;
        EXPECT_EQ(std::wstring(root.oleStr()), c.root) << c.name;
    }
}

} // namespace
