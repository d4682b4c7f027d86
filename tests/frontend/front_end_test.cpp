#include "marvo.h"

#include "marvo/frontend/setting_table.h"
#include "tests/support/failing_memory.h"
#include "tests/support/rounds.h"
#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

namespace {

void writeFile(const char* name, const char* text) {
    std::ofstream(name, std::ios::binary) << text;
}

/// The log's lines, each checked for its form and cut after the prefix; the depth stands in front of nested
/// ones.
std::vector<std::string> logLines() {
    std::ifstream file("marvo.log", std::ios::binary);
    std::vector<std::string> lines;
    const std::regex form(R"(\d\d:\d\d:\d\d\.\d{3}\[\d{5,}\]:(?:  |(\d+) )(.*)\r)");
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, form)) {
            ADD_FAILURE() << "form of: " << line;
            continue;
        }
        lines.push_back((match[1].matched ? match[1].str() + " " : "") + match[2].str());
    }
    return lines;
}

bool logged(const std::string& text) {
    const auto lines = logLines();
    return std::find(lines.begin(), lines.end(), text) != lines.end();
}

struct FrontEnd : testing::Test {
    void SetUp() override { TearDown(); }
    void TearDown() override {
        DeleteFileA("dv.ini");
        DeleteFileA("video.ini");
    }
};

TEST_F(FrontEnd, WithoutSettingsItRecordsOnTheDriveWithMostRoom) {
    dvFrontEnd frontEnd;
    char name[MAX_PATH];
    frontEnd.getRecFilename(name);
    EXPECT_STREQ(name, "C:\\temp.dv");
    EXPECT_TRUE(logged("marvo set deinterlacing off"));
    EXPECT_FALSE(frontEnd.playing() || frontEnd.paused());
    EXPECT_EQ(frontEnd.lastFrame() + frontEnd.writtenFrame() + frontEnd.frameCount(), 0u);
}

TEST_F(FrontEnd, ReadsItsSettings) {
    writeFile("dv.ini", "[dv]\nfile = my \" recording.dv\nlogging = "
                        "no\ngarbage\n[broken\ncontrol=nein\n[dv]\nplaydelay=2*50\n");
    writeFile("video.ini", "[video]\r\ndeinterlace = Ja\r\n");
    dvFrontEnd frontEnd;
    char name[MAX_PATH];
    frontEnd.getRecFilename(name);
    EXPECT_STREQ(name, "my \" recording.dv");
    EXPECT_FALSE(logged("marvo set deinterlacing on")) << "suppressible lines are off";
    frontEnd.log("always", false);
    frontEnd.log("sometimes", true);
    EXPECT_EQ(logLines(), std::vector<std::string>{"always"});
}

/// Type and default of a setting as the documentation words them.
struct Described {
    const frontend::SettingRow& row;
    const frontend::Settings defaults{};

    std::string number(const std::string& standard) const {
        return "number, " + std::to_string(row.least) + " to " + std::to_string(row.most) + " | " + standard;
    }

    std::string operator()(bool frontend::Settings::*value) const {
        return std::string("yes or no | ") + (defaults.*value ? "yes" : "no");
    }
    std::string operator()(int frontend::Settings::*value) const {
        return number(std::to_string(defaults.*value));
    }
    std::string operator()(std::optional<unsigned long> frontend::Settings::*value) const {
        return number(defaults.*value ? "a limit" : "no limit");
    }
    std::string operator()(vcore::str frontend::Settings::*value) const {
        return std::string("text | ") + vcore::str(defaults.*value).getStr();
    }
};

TEST_F(FrontEnd, ItsSettingsAreThoseOfTheDocumentation) {
    std::vector<std::string> documented;
    std::ifstream page("R:\\docs\\settings.md");
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| ") && !line.starts_with("| key ")) {
            documented.push_back(line);
        }
    }
    std::vector<std::string> actual;
    for (const frontend::SettingRow& row : frontend::settingTable) {
        const std::string key = vcore::str(row.key).getStr();
        actual.push_back("| " + key + " | " + key.substr(0, key.find('.')) + ".ini | " +
                         std::visit(Described{row}, row.target) + " | " + row.meaning + " |");
    }
    EXPECT_EQ(documented, actual);
}

TEST_F(FrontEnd, NumbersOutsideOfTheirRangesAreReplacedAndLogged) {
    using Row = frontend::SettingRow;
    const struct {
        const char* text;
        long long Row::*used;
    } cases[] = {{"1e10", &Row::most},    {"99999999999999999999", &Row::most},
                 {"-1e300", &Row::least}, {"nan", nullptr},
                 {"inf", nullptr},        {"-0", nullptr}};
    for (const auto& c : cases) {
        std::map<std::string, std::string> files;
        for (const Row& row : frontend::settingTable) {
            const std::string key = vcore::str(row.key).getStr();
            const size_t dot = key.find('.');
            files[key.substr(0, dot)] +=
                row.least != row.most ? key.substr(dot + 1) + "=" + c.text + "\r\n" : "";
        }
        for (const auto& [section, keys] : files) {
            writeFile((section + ".ini").c_str(), ("[" + section + "]\r\n" + keys).c_str());
        }
        dvFrontEnd frontEnd;
        const auto lines = logLines();
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const std::string& line) { return line.ends_with(" is used"); }),
                  c.used ? 4 : 0);
        for (const Row& row : frontend::settingTable) {
            EXPECT_TRUE(!c.used || row.least == row.most ||
                        logged(vcore::str(row.key).getStr() + (" = " + std::string(c.text)) +
                               " is out of range, " + std::to_string(row.*c.used) + " is used"));
        }
    }
}

TEST_F(FrontEnd, MarkersSetElementsOnlyWhenControlled) {
    dvFrontEnd frontEnd;
    for (const char* marker :
         {"XI05123", "XO05130", "XI00001", "XO00002", "XI-1005", "XIxx", "XI", "", "X", "Z+"}) {
        EXPECT_TRUE(frontEnd.call(marker)) << marker;
    }
    EXPECT_TRUE(frontEnd.call(nullptr));
    EXPECT_TRUE(logged("XI05123"));
    for (int element : {0, 5, 6, 127, 128, -1}) {
        EXPECT_FALSE(frontEnd.playElement(element)) << "nothing is built";
    }
    // Only element 5 may come as far as the replay command.
    const auto lines = logLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "replay"), 1);

    writeFile("dv.ini", "[dv]\ncontrol=0\n");
    dvFrontEnd uncontrolled;
    uncontrolled.call("XI05123");
    EXPECT_TRUE(logged("_XI05123"));
    EXPECT_TRUE(frontEnd.call(("XI" + std::string(70000, '1')).c_str())) << "of any length";
}

TEST_F(FrontEnd, TheClockStopsAtTheFirstMarker) {
    dvFrontEnd frontEnd;
    const DWORD before = GetTickCount();
    frontEnd.call("XR");
    const int begin = frontEnd.getTime();
    Sleep(100);
    frontEnd.call("Z+");
    const int stopped = frontEnd.getTime();
    EXPECT_GE(begin - stopped, 50);
    EXPECT_LE(begin - stopped, static_cast<int>(GetTickCount() - before));
    Sleep(60);
    frontEnd.call("Z+ again");
    EXPECT_EQ(frontEnd.getTime(), stopped);
    frontEnd.call("XR");
    EXPECT_EQ(frontEnd.getTime(), begin);
}

TEST_F(FrontEnd, LogsOnOneLineWithItsDepth) {
    dvFrontEnd frontEnd;
    frontEnd.log("a\tb\r\n", false);
    frontEnd.logBegin();
    frontEnd.log("nested", false);
    frontEnd.logEnd();
    frontEnd.log(nullptr, false);
    const auto lines = logLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], "ab");
    EXPECT_EQ(lines.back(), "1 nested");
}

TEST_F(FrontEnd, EveryLineOfSeveralThreadsIsLogged) {
    constexpr size_t threads = 4;
    constexpr size_t lines = 2500;
    dvFrontEnd frontEnd;
    std::vector<std::thread> writers;
    for (size_t writer = 0; writer < threads; ++writer) {
        writers.emplace_back([&frontEnd, writer] {
            for (size_t i = 0; i < lines; ++i) {
                frontEnd.log(("writer " + std::to_string(writer * lines + i)).c_str(), false);
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    std::set<std::string> found;
    for (const std::string& line : logLines()) {
        if (line.starts_with("writer ")) {
            found.insert(line);
        }
    }
    EXPECT_EQ(found.size(), threads * lines);
}

TEST_F(FrontEnd, CommandsOnAnUnbuiltEngineAreHarmless) {
    dvFrontEnd frontEnd;
    EXPECT_FALSE(frontEnd.replay(0, 9, L"x.dv"));
    EXPECT_FALSE(frontEnd.setSize(100, 100));
    EXPECT_FALSE(frontEnd.setPos(1, 1));
    EXPECT_FALSE(frontEnd._configureVideoWindow());
    frontEnd.stopRecord();
    EXPECT_TRUE(frontEnd.live() && frontEnd.pause() && frontEnd.resume() && frontEnd.seekPosition(7));
    EXPECT_TRUE(frontEnd.setSpeed(2.0));
    EXPECT_TRUE(frontEnd.hideWindow());
    EXPECT_FALSE(frontEnd.showWindow(reinterpret_cast<HWND>(0x7ffe))) << "no window";
    EXPECT_FALSE(logged("1 init")) << "nothing is built for it";
    frontEnd.done();
    frontEnd.done();
    EXPECT_TRUE(logged("done"));
}

TEST_F(FrontEnd, WhatGoesWrongWithARecordingIsLoggedAndPassedOn) {
    struct Listener : vcore::vObject {
        std::string heard;
        void onRecError(unsigned long long frame, unsigned long long frames, unsigned long error,
                        record_event) {
            heard +=
                std::to_string(frame) + " " + std::to_string(frames) + " " + std::to_string(error) + ", ";
        }
        void onRecEnd() { heard += "end"; }
    } listener;
    dvFrontEnd frontEnd;
    frontEnd.connect(L"recError", &listener, &listener, &Listener::onRecError);
    frontEnd.connect(L"recEnd", &listener, &listener, &Listener::onRecEnd);
    EXPECT_FALSE(frontEnd.startRecord(L"unbuilt.dv"));
    vcore::vObject& store = frontEnd.recFilter().store();
    for (const auto& [event, error] : {std::pair(1u, 112u), {2u, 0u}, {3u, 170u}, {4u, 0u}, {5u, 5u}}) {
        store.emitSignal(L"recError", 24, 0x100000007ull, 1ull, error, event);
    }
    store.emitSignal(L"recEnd", 0);
    EXPECT_EQ(listener.heard, "4294967303 1 112, 4294967303 1 0, 4294967303 1 170, 4294967303 1 0, "
                              "4294967303 1 5, end");
    for (const char* line :
         {"1 startRecord result: unbuilt.dv cannot be recorded: there is no ring for the frames of a camera",
          "recording: frame 4294967303 could not be written: Disk full (112)",
          "recording: goes on with frame 4294967303, 1 frame could not be written",
          "recording: the disk is too slow, frame 4294967303 was overwritten before it was written",
          "recording: caught up at frame 4294967303, 1 frame overwritten before",
          "recording: the file could not be completed: Access denied (5)",
          "recording ended: : 0 frames taken, 0 written, 0 lost, 0 failed, 0 beyond the limit"}) {
        EXPECT_TRUE(logged(line)) << line;
    }
}

TEST_F(FrontEnd, WithoutMemoryACommandIsRefusedAndTheNextOneIsNot) {
    if (onGuardedHeap()) {
        GTEST_SKIP() << "its memory cannot be made to fail";
    }
    const std::wstring longName(300, L'n');
    const auto walk = [&](dvFrontEnd& frontEnd) {
        char name[1000] = "";
        frontEnd.setRecFile(longName.c_str());
        frontEnd.setPlayFile(longName.c_str());
        frontEnd.setRemoteFile(longName.c_str());
        frontEnd.getRecFilename(name);
        frontEnd.setDeinterlace(false);
        frontEnd.call(std::string(300, 'm').c_str());
        frontEnd.call("XI05123");
        frontEnd.call("XO05130");
        frontEnd.playElement(5);
        frontEnd.replay(0, 9, L"no such.dv");
        frontEnd.startRecord(longName.c_str());
        frontEnd.stopRecord();
        frontEnd.live() && frontEnd.pause() && frontEnd.resume() && frontEnd.setSpeed(1);
        frontEnd.seekPosition(7);
        frontEnd.initRecord();
        frontEnd.playinit(nullptr, 0, 9, "no such.dv");
        frontEnd.playinit(nullptr, 0, 9, "no such.avi");
        frontEnd._initVideoWindow();
        frontEnd._configureVideoWindow();
        frontEnd.hideWindow();
        frontEnd.onRecInfo(1, 1, 1);
        frontEnd.log("a line", false);
        frontEnd.onError(L"an error");
        frontEnd.done();
    };
    unsigned k = 0;
    std::ptrdiff_t refused = 0;
    for (bool failed = true; failed;) {
        dvFrontEnd frontEnd;
        const FailingMemory memory(++k);
        walk(frontEnd);
        failed = memory.failed();
        frontEnd.setRecFile(L"short");
        char name[1000] = "";
        frontEnd.getRecFilename(name);
        ASSERT_STREQ(name, "short") << k;
        refused += logged("refused: there is not enough memory");
    }
    EXPECT_GT(k, 60u);
    EXPECT_GT(refused, 20);
}

TEST_F(FrontEnd, ABacklogBrakesTheLoader) {
    struct Listener : vcore::vObject {
        unsigned long long backlog = 0;
        void onRecInfo(unsigned long long last, unsigned long long written, unsigned long) {
            backlog = last - written;
        }
    } listener;
    dvFrontEnd frontEnd;
    frontEnd.connect(L"recInfo", &listener, &listener, &Listener::onRecInfo);
    const unsigned long breakers[][2] = {{0, 0}, {25, 0}, {26, 1}, {45, 20}, {5000, 20}};
    for (const auto& [backlog, breaker] : breakers) {
        frontEnd.onRecInfo(0x100000000ull + backlog, 0x100000000ull, 50);
        EXPECT_EQ(frontEnd.playFilter().breaker(), breaker) << backlog;
        EXPECT_EQ(listener.backlog, backlog);
    }
}

} // namespace
