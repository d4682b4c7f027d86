#include "host/options.h"
#include "host/report.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Outcome = host::Options::Outcome;

TEST(Options, AreReadOrRefusedWithAReason) {
    host::Options options;
    std::string text;
    EXPECT_EQ(
        options.read({L"--script", L"/a \xe4.txt", L"--size", L"640x480", L"--report", L"r.json"}, text),
        Outcome::run);
    EXPECT_TRUE(options.script == L"/a \xe4.txt" && options.report == L"r.json");
    EXPECT_TRUE(options.width == 640 && options.height == 480);
    EXPECT_EQ(options.read({L"--help"}, text), Outcome::help);
    EXPECT_NE(text.find("--size WIDTHxHEIGHT"), std::string::npos) << text;
    EXPECT_NE(text.find("  wait-shown FRAME MILLISECONDS\n"), std::string::npos) << text;
    const std::vector<std::wstring> wrong[] = {
        {L"a.txt"},           {L"--script"},         {L"--report", L"r.json"}, {L"--size", L"640"},
        {L"--size", L"0x10"}, {L"--size", L"9x9x9"}, {L"--size", L"99999x9"},  {L"--sise", L"9x9"},
    };
    for (const std::vector<std::wstring>& arguments : wrong) {
        text.clear();
        EXPECT_EQ(host::Options().read(arguments, text), Outcome::wrong);
        EXPECT_NE(text, "");
    }
}

TEST(Report, HoldsStepsWatchesAndScreenshots) {
    host::Report report;
    host::Status status;
    status.speed = 0.5;
    report.add({{1, "record \"a\\b\"", {"record"}}, 12.4, true, "tab\there", status});
    report.add({{2, "expect speed == 2", {"expect"}}, 20.0, false, "no UTF-8: \xff", {}});
    report.addScreenshot("out\\live.bmp");
    host::PlayWatch watch;
    for (long long frame : {7, 7, 8}) {
        watch.add({40.0, frame, true});
    }
    const auto json = nlohmann::json::parse(report.json("s.txt", {{"w", watch}}));
    EXPECT_TRUE(json["script"] == "s.txt" && json["passed"] == false && json["failures"] == 1);
    const auto& step = json["steps"][0];
    EXPECT_TRUE(step["line"] == 1 && step["command"] == "record \"a\\b\"" && step["message"] == "tab\there");
    EXPECT_TRUE(step["time_ms"] == 12 && step["held"] == true) << step;
    EXPECT_EQ(step["status"]["speed"], 0.5);
    EXPECT_EQ(step["status"]["newest"].dump(), "-1");
    EXPECT_EQ(json["steps"][1]["message"], "no UTF-8: \xef\xbf\xbd");
    EXPECT_EQ(json["screenshots"][0], "out\\live.bmp");
    const auto expected = nlohmann::json::parse(R"([
        {"frame": 7, "time_ms": 40, "ticks": 2, "replaying": true},
        {"frame": 8, "time_ms": 40, "ticks": 1, "replaying": true}])");
    EXPECT_EQ(json["watches"]["w"], expected);
}
