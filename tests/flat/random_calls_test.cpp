#include "marvo_c.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace {

/// Handles that any thread may use, close, and use behind that.
template <class Handle>
struct Shared {
    std::atomic<Handle*> handles[4] = {};
};
Shared<marvo_reader> readers;
Shared<marvo_writer> writers;
Shared<marvo_decoder> decoders;
Shared<marvo_feed> feeds;

void MARVO_CALL onEvent(void*, const marvo_event*) {}
void MARVO_CALL onLine(void*, const char*) {}
void MARVO_CALL onPlay(void*, const marvo_play_info*) {}
int MARVO_CALL onWork(void* user, marvo_u64, marvo_u64) {
    return user != nullptr;
}
int MARVO_CALL onFinding(void* user, marvo_u64, const char*) {
    return user != nullptr;
}

/// One thread's calls: senseless arguments in a senseless order. Only memory is what it says it is.
class Caller {
public:
    explicit Caller(unsigned seed) : random_(seed), memory_(MARVO_MOST_FRAME_BYTES), frame_(144000) {
        const unsigned char start[] = {0x1F, 0x07, 0x00, 0xBF};
        std::copy(std::begin(start), std::end(start), frame_.begin());
    }

    /// Makes one call; its result.
    int call();

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    template <class Value>
    Value oneOf(std::initializer_list<Value> values) {
        return values.begin()[below(static_cast<unsigned>(values.size()))];
    }
    marvo_u64 number() {
        return oneOf<marvo_u64>(
            {0, 1, 2, 7, 100, 0x7FFFFFFF, 0x100000000, 1ull << 63, ~0ull - 1, ~0ull, random_()});
    }
    marvo_i64 signedNumber() { return static_cast<marvo_i64>(number()); }
    marvo_u32 small() { return static_cast<marvo_u32>(number()); }
    int choice() { return oneOf({0, 1, 2, 3, 4, -1, 1000}); }
    const char* text() {
        return oneOf<const char*>({nullptr, "", "random_a.dv", "random_b.avi", "NUL", "no such folder\\x.dv",
                                   "bad\xC0text", "dv.input", "dv.playdelay", "engine.recframes", "yes", "-1",
                                   "999999999999999999999", "XI0500003", "XO0500009", "speed 0.5", "\"",
                                   "step -1"});
    }
    /// Not where one may grow for ever: these are written to.
    const char* newFile() { return oneOf<const char*>({nullptr, "", "random_a.dv", "random_b.avi", "NUL"}); }
    char* buffer() { return below(4) == 0 ? nullptr : reinterpret_cast<char*>(memory_.data()); }
    marvo_u32 capacity() { return oneOf<marvo_u32>({0, 1, 5, 143999, 144000, MARVO_MOST_FRAME_BYTES}); }
    const void* frame() { return below(4) == 0 ? nullptr : frame_.data(); }
    marvo_u32 bytes() { return oneOf<marvo_u32>({0, 3, 480, 120000, 144000}); }
    marvo_u32* room() { return below(4) == 0 ? nullptr : &room_; }
    /// A structure in memory that is large enough for what its size says and the library believes.
    template <class Structure>
    Structure* structure() {
        auto* const made = reinterpret_cast<Structure*>(structure_);
        made->size =
            oneOf<marvo_u32>({0, 4, 8, 9, 60, sizeof(Structure), sizeof(Structure), 2000, 65537, ~0u});
        return below(6) == 0 ? nullptr : made;
    }
    template <class Handle>
    Handle* handle(Shared<Handle>& shared) {
        return below(4) == 0 ? reinterpret_cast<Handle*>(static_cast<std::uintptr_t>(number()))
                             : shared.handles[below(4)].load();
    }
    template <class Handle, class Open>
    int open(Shared<Handle>& shared, Open toOpen) {
        Handle* made = nullptr;
        const int result = toOpen(below(8) == 0 ? nullptr : &made);
        if (made) {
            shared.handles[below(4)] = made;
        }
        return result;
    }
    void* window() {
        return below(3) == 0 ? reinterpret_cast<void*>(static_cast<std::uintptr_t>(small())) : nullptr;
    }
    void* user() { return below(2) == 0 ? this : nullptr; }

    std::minstd_rand random_;
    std::vector<unsigned char> memory_;
    std::vector<unsigned char> frame_;
    alignas(8) unsigned char structure_[2048] = {};
    marvo_u32 room_ = 0;
    marvo_u64 in_ = 0, out_ = 0;
    marvo_i64 value_ = 0;
    short samples_[16] = {};
};

int Caller::call() {
    switch (below(64)) {
    case 0:
        return marvo_version() == 0;
    case 1:
        return marvo_version_text() == nullptr;
    case 2:
        return marvo_last_error() == nullptr;
    case 3:
        return marvo_result_name(choice()) == nullptr;
    case 4:
        return below(4) == 0 ? marvo_init(window()) : marvo_live();
    case 5:
        return below(4) == 0 ? marvo_play_init(window(), number(), number(), text()) : marvo_pause();
    case 6:
        return below(16) == 0 ? marvo_done() : 0;
    case 7:
        return below(8) == 0 ? marvo_show(window()) : marvo_resume();
    case 8:
        return marvo_hide();
    case 9:
        return marvo_set_video_size(choice(), choice());
    case 10:
        return marvo_set_video_pos(choice(), choice());
    case 11:
        return marvo_window_destroyed();
    case 12:
        return below(8) == 0 ? marvo_device_count(room()) : 0;
    case 13:
        return below(8) == 0 ? marvo_device_name(small(), buffer(), capacity(), room()) : 0;
    case 14:
        return marvo_record_start(newFile());
    case 15:
        return marvo_record_stop();
    case 16:
        return marvo_record_flush();
    case 17:
        return marvo_live();
    case 18:
        return marvo_replay(number(), number(), text());
    case 19:
        return marvo_pause();
    case 20:
        return marvo_resume();
    case 21:
        return marvo_set_speed(oneOf({0.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN(), 0.5}));
    case 22:
        return marvo_seek(number());
    case 23:
        return marvo_step(signedNumber());
    case 24:
        return marvo_element_set(small(), number(), number());
    case 25:
        return marvo_element_get(small(), below(4) ? &in_ : nullptr, &out_);
    case 26:
        return marvo_element_play(small());
    case 27:
        return marvo_marker(text());
    case 28:
        return marvo_command(text());
    case 29:
        return marvo_log(text());
    case 30:
        return marvo_setting_count(room());
    case 31:
        return marvo_setting_describe(small(), structure<marvo_setting_info>());
    case 32:
        return marvo_setting_get_number(text(), below(4) ? &value_ : nullptr);
    case 33:
        return marvo_setting_set_number(oneOf<const char*>({nullptr, "dv.control", "dv.input", "x"}),
                                        signedNumber());
    case 34:
        return marvo_setting_get_text(text(), buffer(), capacity(), room());
    case 35:
        return marvo_setting_set_text(oneOf<const char*>({nullptr, "dv.reconnect", "engine.recframes", "x"}),
                                      text());
    case 36:
        return marvo_status(structure<marvo_status_info>());
    case 37:
        return marvo_play(structure<marvo_play_info>());
    case 38:
        return marvo_record_file(buffer(), capacity(), room());
    case 39:
        return marvo_set_event_callback(below(2) ? onEvent : nullptr, user());
    case 40:
        return marvo_event_next(structure<marvo_event>(), below(3));
    case 41:
        return marvo_set_log_callback(below(2) ? onLine : nullptr, user());
    case 42:
        return marvo_set_play_callback(below(2) ? onPlay : nullptr, user());
    case 43:
        return marvo_set_play_message(window(), small());
    case 44:
        return marvo_frame_read(number(), buffer(), capacity(), structure<marvo_frame_info>());
    case 45:
        return marvo_frame_describe(frame(), bytes(), structure<marvo_frame_info>());
    case 46:
        return marvo_frame_sound(frame(), bytes(), samples_, below(17), structure<marvo_sound_info>());
    case 47:
        return open(decoders, [](marvo_decoder** made) { return marvo_decoder_open(made); });
    case 48:
        return below(8) ? 0
                        : marvo_decoder_decode(handle(decoders), frame(), bytes(), buffer(), capacity(),
                                               structure<marvo_picture_info>());
    case 49:
        return marvo_decoder_close(handle(decoders));
    case 50:
        return open(feeds, [this](marvo_feed** made) { return marvo_feed_open(choice(), made); });
    case 51:
        return marvo_feed_add(handle(feeds), frame(), bytes());
    case 52:
        return marvo_feed_close(handle(feeds));
    case 53:
        return open(readers, [this](marvo_reader** made) { return marvo_reader_open(text(), made); });
    case 54:
        return marvo_reader_info(handle(readers), structure<marvo_recording_info>());
    case 55:
        return marvo_reader_refresh(handle(readers));
    case 56:
        return marvo_reader_read(handle(readers), number(), buffer(), capacity(),
                                 structure<marvo_frame_info>());
    case 57:
        return marvo_reader_close(handle(readers));
    case 58:
        return open(writers, [this](marvo_writer** made) {
            return marvo_writer_create(newFile(), choice(), choice(), below(4), made);
        });
    case 59:
        return marvo_writer_add(handle(writers), frame(), bytes());
    case 60:
        return marvo_writer_finish(handle(writers), below(2) ? &in_ : nullptr);
    case 61:
        return marvo_verify(text(), onFinding, onWork, user(), structure<marvo_verify_result>());
    case 62:
        return marvo_export(text(), newFile(), structure<marvo_copy_options>(), onWork, user(), nullptr);
    default:
        return marvo_repair(text(), newFile(), below(4), onWork, user(), structure<marvo_copy_result>());
    }
}

TEST(RandomCalls, OfFourThreadsGiveCodes) {
    const unsigned calls = std::getenv("MARVO_LONG") ? 10000 : 1500;
    constexpr unsigned threadCount = 4;
    ASSERT_EQ(marvo_setting_set_text("engine.recfile", "random_a.dv"), MARVO_OK);
    ASSERT_EQ(marvo_setting_set_number("dv.playdelay", 0), MARVO_OK);
    std::vector<std::thread> threads;
    std::atomic<unsigned> made{0}, good{0};
    for (unsigned thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            Caller caller(20250301 + thread);
            for (unsigned n = 0; n < calls / threadCount; ++n) {
                const int result = caller.call();
                EXPECT_TRUE(result >= MARVO_OK && result <= MARVO_E_REFUSED) << result;
                EXPECT_TRUE(result == MARVO_OK || *marvo_last_error() != 0) << result;
                ++made;
                good += result == MARVO_OK;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(good, made / 10);
    EXPECT_EQ(marvo_done(), MARVO_OK) << marvo_last_error();
    EXPECT_EQ(marvo_set_event_callback(nullptr, nullptr), MARVO_OK);
    EXPECT_EQ(marvo_set_log_callback(nullptr, nullptr), MARVO_OK);
    EXPECT_EQ(marvo_set_play_callback(nullptr, nullptr), MARVO_OK);
    EXPECT_EQ(marvo_set_play_message(nullptr, 0), MARVO_OK);
    for (unsigned n = 0; n < 4; ++n) {
        marvo_reader_close(readers.handles[n]);
        marvo_writer_finish(writers.handles[n], nullptr);
        marvo_decoder_close(decoders.handles[n]);
        marvo_feed_close(feeds.handles[n]);
    }
    std::remove("random_a.dv");
    std::remove("random_b.avi");
}

} // namespace
