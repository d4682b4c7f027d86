// The camera in a graph of the system's own, as a capture application builds it.
#include "devices/camera.h"

#include "collector.h"

#include "devices/device_presence.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <limits>

using namespace device_tests;
using namespace devices;

namespace {

const int clip_frames = 7;

class camera_test : public device_test {
protected:
    camera_test() {
        config_.stream = folder_.write("clip.dv", marked_frames(dv_system::pal_system(), clip_frames));
        config_.speed = 10;
        config_.log = folder_.path("log.txt");
    }

    /// Makes the graph camera -> collector.
    void build(graph& graph) {
        camera_ = graph.add(new camera(config_));
        sink_ = graph.add(new collector);
        ASSERT_EQ(graph.connect(camera_, sink_), S_OK);
    }

    /// Runs until `count` frames have come and gives all that came, which are those of the log.
    std::vector<arrival> play(size_t count) {
        graph graph;
        build(graph);
        EXPECT_EQ(graph.run(), S_OK);
        sink_->wait_for(count);
        EXPECT_EQ(graph.stop(), S_OK);
        const auto came = sink_->wait_for(count);
        EXPECT_EQ(logged(), marks(came));
        return came;
    }

    /// The source frames that the log names, in order of delivery.
    std::vector<int> logged() {
        std::ifstream file(std::filesystem::path(config_.log));
        std::vector<int> frames;
        for (std::string line; std::getline(file, line);) {
            int delivery = 0, frame = 0;
            if (std::sscanf(line.c_str(), "%d %d", &delivery, &frame) != 2) {
                continue;
            }
            EXPECT_EQ(delivery, static_cast<int>(frames.size()));
            frames.push_back(frame);
        }
        return frames;
    }

    static std::vector<int> marks(const std::vector<arrival>& arrivals) {
        std::vector<int> result;
        for (const arrival& one : arrivals) {
            result.push_back(one.data.at(79));
        }
        return result;
    }

    /// How late the most punctual of the frames `first` to `end` - 1 came, in ms against the times they are
    /// stamped with; only differences mean something.
    static double least_lateness(const std::vector<arrival>& came, size_t first, size_t end) {
        double least = std::numeric_limits<double>::infinity();
        for (size_t index = first; index < end; ++index) {
            least = std::min(least, came[index].ms - static_cast<double>(came[index].start) / 10000);
        }
        return least;
    }

    test_folder folder_;
    camera_config config_;
    camera* camera_ = nullptr;
    collector* sink_ = nullptr;
};

} // namespace

TEST_F(camera_test, repeats_its_frames_in_order_with_times) {
    const auto came = play(20);
    for (size_t index = 0; index < came.size(); ++index) {
        const arrival& one = came[index];
        const auto number = static_cast<LONGLONG>(index);
        ASSERT_EQ(one.data, grey_frame(dv_system::pal_system(), index % clip_frames)) << index;
        EXPECT_NEAR(one.start - came[0].start, number * 40000, 1);
        EXPECT_NEAR(one.end - one.start, 40000, 1);
        EXPECT_TRUE(one.media_start == number && one.media_end == number + 1) << index;
        EXPECT_EQ(one.discontinuity, index == 0);
    }
}

TEST_F(camera_test, keeps_the_frame_rate_by_the_clock_and_without_one) {
    config_.speed = 1;
    for (const bool with_clock : {true, false}) {
        graph graph;
        build(graph);
        ASSERT_TRUE(!with_clock || graph.run() == S_OK);
        ASSERT_TRUE(sink_->Run(0) == S_OK && camera_->Run(0) == S_OK);
        const auto came = sink_->wait_for(26);
        // A busy machine may hold up single frames, so each half is judged by its most punctual one.
        EXPECT_NEAR(least_lateness(came, 13, 26) - least_lateness(came, 0, 13), 0, 60) << with_clock;
        camera_->Stop();
        sink_->Stop();
    }
}

TEST_F(camera_test, drops_and_stalls_as_told) {
    config_.drops = {{2, 3}, {5, 5}};
    config_.stalls = {{7, 600}};
    const auto came = play(9);
    const int expected[] = {0, 1, 4, 6, 7, 8, 9, 10, 11};
    for (int index = 0; index < 9; ++index) {
        EXPECT_EQ(came[index].media_start, expected[index]);
        EXPECT_EQ(marks(came)[index], expected[index] % clip_frames);
        EXPECT_EQ(came[index].discontinuity, index == 0 || index == 2 || index == 3) << index;
    }
    EXPECT_GT(came[4].ms - came[3].ms, 200) << "frame 7 is held up, not only stamped";
    EXPECT_NEAR(came[4].start - came[3].start, 6040000, 1);
    EXPECT_NEAR(came[8].start - came[4].start, 160000, 1) << "after a stall the rate is as before";
}

TEST_F(camera_test, goes_on_after_refused_frames_and_after_a_pause) {
    std::atomic<bool> refuses = false;
    graph graph;
    build(graph);
    sink_->on_sample = [&](IMediaSample*) { return refuses ? E_FAIL : S_OK; };
    ASSERT_EQ(graph.run(), S_OK);
    sink_->wait_for(3);
    refuses = true;
    sink_->wait_for(sink_->wait_for(0).size() + 3);
    ASSERT_EQ(graph.pause(), S_OK);
    FILTER_STATE state;
    EXPECT_TRUE(camera_->GetState(0, &state) == VFW_S_CANT_CUE && state == State_Paused);
    const size_t paused = sink_->wait_for(0).size();
    Sleep(80);
    EXPECT_LE(sink_->wait_for(0).size(), paused + 1) << "one more was on its way";
    ASSERT_EQ(graph.run(), S_OK);
    sink_->wait_for(paused + 3);
    graph.stop();
    const auto came = marks(sink_->wait_for(0));
    for (size_t index = 0; index < came.size(); ++index) {
        EXPECT_EQ(came[index], static_cast<int>(index % clip_frames));
    }
}

TEST_F(camera_test, stops_while_downstream_keeps_all_buffers_or_does_not_come_back) {
    for (const bool keeps : {true, false}) {
        graph graph;
        build(graph);
        std::vector<com_ref<IMediaSample>> kept;
        sink_->on_sample = [&](IMediaSample* sample) {
            if (keeps) {
                kept.emplace_back(sample);
            } else {
                WaitForSingleObject(sink_->flushed.handle(), 10000);
            }
            return S_OK;
        };
        ASSERT_EQ(graph.run(), S_OK);
        sink_->wait_for(keeps ? 4 : 1);
        Sleep(50); // now no buffer is left, or the camera is held in the first frame
        const double before = counter_ms();
        EXPECT_EQ(graph.stop(), S_OK);
        // Two seconds are the camera's patience with a receiver, which is asked to flush after them.
        EXPECT_LT(counter_ms() - before, keeps ? 1900 : 9000);
    }
}

TEST_F(camera_test, is_lost_as_often_as_told_and_comes_back) {
    config_ = camera_config::parse("lose = 4:1500\nlose=2:90000:C:\\other.dv\nlose = 3\nlose = x:1\n", L"",
                                   "the refused line is the test's");
    ASSERT_EQ(config_.losses.size(), 3u);
    EXPECT_TRUE(config_.losses[1].stream == L"C:\\other.dv" && !config_.losses[2].return_ms);
    config_.stream = folder_.path("clip.dv");
    config_.speed = 10;
    graph graph;
    build(graph);
    ASSERT_EQ(graph.run(), S_OK);
    const double lost_at = sink_->wait_for(4).back().ms;
    const auto events = query<IMediaEvent>(graph.get(), IID_IMediaEvent);
    long code = 0;
    LONG_PTR device = 0, present = -1;
    // The system's queue, once it has held an event, gives up its next wait at once when it is empty.
    while (code != EC_DEVICE_LOST && counter_ms() < lost_at + patience_ms) {
        if (events->GetEvent(&code, &device, &present, 20) == S_OK) {
            events->FreeEventParams(code, device, present);
        }
    }
    EXPECT_TRUE(code == EC_DEVICE_LOST && present == 0) << code;
    EXPECT_EQ(graph.stop(), S_OK);
    EXPECT_EQ(sink_->wait_for(0).size(), 4u);
    const HRESULT while_lost = camera_->Pause();
    EXPECT_TRUE(while_lost == HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED) || device_presence::present())
        << "unless a busy machine came here too late: " << while_lost;
    while (!device_presence::present() && counter_ms() < lost_at + patience_ms) {
        Sleep(5);
    }
    EXPECT_GT(counter_ms() - lost_at, 1450) << "the system's ticks are coarse";
    ASSERT_EQ(graph.run(), S_OK);
    EXPECT_EQ(marks(sink_->wait_for(4 + 2)), (std::vector{0, 1, 2, 3, 0, 1}));
    while (device_presence::losses() < 2 && counter_ms() < lost_at + patience_ms) {
        Sleep(5);
    }
    EXPECT_TRUE(device_presence::losses() == 2 && !device_presence::present());
    EXPECT_TRUE(config_.stream_after(1) == config_.stream && config_.stream_after(3) == L"C:\\other.dv");
    device_presence::enter("another");
    EXPECT_TRUE(device_presence::present());
}
