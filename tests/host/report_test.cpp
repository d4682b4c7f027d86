#include "host/options.h"
#include "host/report.h"

#include <gtest/gtest.h>

TEST(Options, AreReadOrRefusedWithAReason) {
    host::Options options;
    std::string error;
    EXPECT_TRUE(options.read({L"--script", L"a.txt", L"--size", L"640x480", L"--report", L"r.json"}, error));
    EXPECT_TRUE(options.script == L"a.txt" && options.width == 640 && options.height == 480);
    const std::vector<std::wstring> wrong[] = {
        {L"a.txt"},           {L"--script"},         {L"--report", L"r.json"}, {L"--size", L"640"},
        {L"--size", L"0x10"}, {L"--size", L"9x9x9"}, {L"--size", L"99999x9"},  {L"--sise", L"9x9"},
    };
    for (const std::vector<std::wstring>& arguments : wrong) {
        error.clear();
        EXPECT_FALSE(host::Options().read(arguments, error) || error.empty());
    }
}

TEST(Report, HoldsStepsWatchesAndScreenshotsWithTextEscaped) {
    host::Report report;
    report.add({{1, "record \"a\\b\"", {"record"}}, 12.4, true, "tab\there", {}});
    report.add({{2, "expect speed == 2", {"expect"}}, 20.0, false, "speed is 1", {}});
    report.addScreenshot("out\\live.bmp");
    host::PlayWatch watch;
    for (long long frame : {7, 7, 8}) {
        watch.add({40.0, frame, true});
    }
    EXPECT_EQ(report.failures(), 1u);
    const std::string json = report.json("s.txt", {{"w", watch}});
    for (const char* part :
         {R"("passed": false)", R"("failures": 1)",
          R"("command": "record \"a\\b\"", "time_ms": 12, "held": true)", R"("message": "tab\u0009here")",
          R"("newest": -1, "written": -1, "shown": -1)", R"("screenshots": ["out\\live.bmp"])",
          R"("w": [{"frame": 7, "time_ms": 40, "ticks": 2, "replaying": true}, {"frame": 8)"}) {
        EXPECT_NE(json.find(part), std::string::npos) << part << " is missing in\n" << json;
    }
}
