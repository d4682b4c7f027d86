#include "host/play_watch.h"

#include <gtest/gtest.h>

namespace {

/// Posts of these frames, one each 40 ms.
host::PlayWatch watched(const std::vector<long long>& frames, bool replaying = true) {
    host::PlayWatch watch;
    for (long long frame : frames) {
        watch.add({40.0 * static_cast<double>(watch.posts().size()), frame, replaying});
    }
    return watch;
}

} // namespace

TEST(PlayWatch, AcceptsLoopsAndNamesWhatBreaksThem) {
    const struct {
        std::vector<long long> frames;
        double speed;
        const char* wrong; ///< part of the complaint; null: none
    } cases[] = {
        {{5, 6, 7, 5, 6, 7, 5}, 1.0, nullptr},
        {{3, 4, 5, 6, 7, 5, 9}, 1.0, nullptr},
        {{5, 5, 5, 6, 7}, 1.0, nullptr},
        {{5, 6, 6, 7, 5}, 1.0, "frame 6 at 40 ms was due for 2 ticks"},
        {{5, 7, 5, 6}, 1.0, "frame 7 at 40 ms does not follow frame 5"},
        {{5, 6, 9, 5, 6, 7}, 1.0, "frame 9 at 80 ms lies outside"},
        {{5, 6}, 1.0, "only 2 of 3"},
        {{7, 6, 5, 7, 6}, -1.0, nullptr},
        {{5, 6, 7}, -1.0, "does not follow"},
        {{5, 6, 6, 7, 7, 5}, 0.5, nullptr},
        {{5, 6, 7, 7, 5}, 0.5, "frame 6 at 40 ms was due for 1 ticks instead of 2"},
        {{5, 7, 6, 5, 7}, 2.0, nullptr},
        {{5, 6, 7}, 2.0, "at speed 2"},
        {{6, 6, 6}, 0.0, nullptr},
        {{6, 6, 7}, 0.0, "although the speed is 0"},
        {{1, 2}, 1.0, "nothing of the range"},
    };
    for (const auto& [frames, speed, wrong] : cases) {
        const std::string complaint = watched(frames).checkLoop(5, 7, speed);
        if (wrong == nullptr) {
            EXPECT_EQ(complaint, "");
        } else {
            EXPECT_NE(complaint.find(wrong), std::string::npos) << complaint << " instead of " << wrong;
        }
    }
    EXPECT_NE(watched({5, 6, 7}, false).checkLoop(5, 7, 1.0), "") << "live frames are no replay";
}
