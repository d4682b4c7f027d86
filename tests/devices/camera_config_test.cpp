#include "devices/camera_config.h"

#include "test_files.h"

#include <gtest/gtest.h>

using device_tests::bytes;
using device_tests::test_folder;
using devices::camera_config;

TEST(camera_config, reads_every_key) {
    const camera_config config = camera_config::parse(
        "\xEF\xBB\xBFstream = clips/a b#1.dv  # the clip\r\nspeed=2.5\n\n  burst = 4\t\nstall = 10:250\n"
        "stall = 20 : 5\ndrop = 3-5\ndrop = 9-9\n# drop = 0-99\nlose = 50\nreturn = 700\nlog = C:\\out.txt\n"
        "devices = 3",
        L"R:\\here", "test");
    EXPECT_EQ(config.stream, L"R:\\here\\clips/a b#1.dv");
    EXPECT_EQ(config.log, L"C:\\out.txt");
    EXPECT_TRUE(config.speed == 2.5 && config.burst == 4 && config.devices == 3);
    EXPECT_TRUE(config.lose == 50u && config.return_ms == 700u);
    for (const auto& [frame, ms] : {std::pair{10, 250u}, {20, 5u}, {11, 0u}}) {
        EXPECT_EQ(config.stall_before(frame), ms) << frame;
    }
    std::string dropped;
    for (int frame = 0; frame < 100; ++frame) {
        dropped += config.drops_frame(frame) ? std::to_string(frame) + " " : "";
    }
    EXPECT_EQ(dropped, "3 4 5 9 ");
}

TEST(camera_config, names_bad_lines_and_goes_on) {
    const char* const bad[] = {"burst",        "= 3",          "burst =",      "burst = 0",
                               "burst = 4x",   "burst = -1",   "speed = 0",    "speed = nan",
                               "speed = 1e9",  "stall = 5",    "stall = 5:",   "stall = :5",
                               "drop = 5",     "drop = 5-4",   "drop = a-b",   "lose = -1",
                               "lose = 1 2",   "devices = 17", "return = 1e3", "colour = red",
                               "speed = 1.5.", "drop = 1--2",  "stream =",     "lose = 99999999999999999999"};
    for (const char* line : bad) {
        testing::internal::CaptureStderr();
        const camera_config config = camera_config::parse(std::string(line) + "\nlog = C:\\x\n", L"", "test");
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(said.find("line 1 ") != said.npos && said.find('\n') == said.size() - 1) << line << said;
        EXPECT_TRUE(config.log == L"C:\\x" && config.speed == 1 && config.burst == 1 && config.devices == 1 &&
                    config.stalls.empty() && config.drops.empty() && !config.lose && !config.return_ms)
            << line;
    }
}
