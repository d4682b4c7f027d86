#include "marvo_c.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr marvo_u32 frameBytes = 144000;

/// The frames of the test stream, whole ones of a camera.
std::vector<unsigned char> streamFrames(std::size_t count) {
    std::vector<unsigned char> frames(count * frameBytes);
    std::ifstream stream(std::string(std::getenv("MARVO_STREAMS")) + "\\pal.dv", std::ios::binary);
    stream.read(reinterpret_cast<char*>(frames.data()), static_cast<std::streamsize>(frames.size()));
    EXPECT_TRUE(stream);
    return frames;
}

template <class Structure>
Structure sized() {
    Structure structure{};
    structure.size = sizeof structure;
    return structure;
}

/// A file of the test's, removed at its end.
struct File {
    std::string name;
    explicit File(const char* ofName) : name(ofName) { remove(); }
    ~File() { remove(); }
    void remove() const { std::remove(name.c_str()); }
    operator const char*() const { return name.c_str(); }
};

/// Waits until `condition` holds.
template <class Condition>
bool await(Condition condition) {
    for (const ULONGLONG end = GetTickCount64() + 20000; GetTickCount64() < end; Sleep(2)) {
        if (condition()) {
            return true;
        }
    }
    return false;
}

void makeRecording(const char* name, int kind, const std::vector<unsigned char>& frames) {
    marvo_writer* writer = nullptr;
    ASSERT_EQ(marvo_writer_create(name, kind, MARVO_SYSTEM_625, 0, &writer), MARVO_OK) << marvo_last_error();
    for (std::size_t at = 0; at < frames.size(); at += frameBytes) {
        ASSERT_EQ(marvo_writer_add(writer, &frames[at], frameBytes), MARVO_OK) << marvo_last_error();
    }
    marvo_u64 written = 0;
    ASSERT_EQ(marvo_writer_finish(writer, &written), MARVO_OK) << marvo_last_error();
    ASSERT_EQ(written, frames.size() / frameBytes);
    ASSERT_EQ(marvo_writer_finish(writer, &written), MARVO_E_HANDLE);
}

TEST(Structures, OlderAndNewerCallersAreServed) {
    std::vector<unsigned char> memory(2 * sizeof(marvo_status_info), 0xEE);
    auto* const status = reinterpret_cast<marvo_status_info*>(memory.data());
    const auto full = sized<marvo_status_info>();
    for (const std::size_t size : {std::size_t(8), std::size_t(100), sizeof full, memory.size()}) {
        std::fill(memory.begin(), memory.end(), 0xEE);
        status->size = static_cast<marvo_u32>(size);
        ASSERT_EQ(marvo_status(status), MARVO_OK);
        EXPECT_EQ(status->size, size);
        EXPECT_EQ(status->built, MARVO_BUILT_NOTHING);
        EXPECT_TRUE(size == memory.size() || memory[size] == 0xEE) << size;
        EXPECT_TRUE(size < memory.size() || (memory.back() == 0 && memory[sizeof full] == 0));
    }
    for (const marvo_u32 wrong : {0u, 7u, 65537u, ~0u}) {
        std::fill(memory.begin(), memory.end(), 0xEE);
        status->size = wrong;
        EXPECT_EQ(marvo_status(status), MARVO_E_ARGUMENT);
        EXPECT_EQ(memory[4], 0xEE);
    }
    EXPECT_NE(std::string(marvo_last_error()).find("4294967295"), std::string::npos);
}

TEST(Errors, BelongToTheirThread) {
    EXPECT_EQ(marvo_record_start("x.dv"), MARVO_E_STATE);
    const std::string mine = marvo_last_error();
    std::thread([] {
        EXPECT_STREQ(marvo_last_error(), "");
        EXPECT_EQ(marvo_reader_open("no such.dv", nullptr), MARVO_E_ARGUMENT);
        marvo_reader* reader = nullptr;
        EXPECT_EQ(marvo_reader_open("no s\xC3\xBC"
                                    "ch.dv",
                                    &reader),
                  MARVO_E_FILE);
        EXPECT_NE(std::strstr(marvo_last_error(), "'no s\xC3\xBC"
                                                  "ch.dv' cannot be opened: "),
                  nullptr)
            << marvo_last_error();
        EXPECT_EQ(marvo_reader_open("bad\xFF.dv", &reader), MARVO_E_ARGUMENT);
    }).join();
    EXPECT_EQ(marvo_last_error(), mine);
    EXPECT_NE(mine.find("marvo_init"), std::string::npos);
    EXPECT_STREQ(marvo_result_name(MARVO_E_REFUSED), "MARVO_E_REFUSED");
    EXPECT_STREQ(marvo_result_name(-1), "unknown");
    EXPECT_EQ(std::to_string(marvo_version() >> 16) + "." + std::to_string(marvo_version() >> 8 & 255) + "." +
                  std::to_string(marvo_version() & 255),
              marvo_version_text());
}

TEST(Settings, AreSetAndReadByName) {
    marvo_u32 count = 0;
    ASSERT_EQ(marvo_setting_count(&count), MARVO_OK);
    EXPECT_EQ(marvo_setting_describe(count, nullptr), MARVO_E_ARGUMENT);
    for (marvo_u32 n = 0; n < count; ++n) {
        auto info = sized<marvo_setting_info>();
        char before[512] = "";
        ASSERT_EQ(marvo_setting_describe(n, &info), MARVO_OK);
        EXPECT_TRUE(info.name[0] && info.meaning[0]) << n;
        ASSERT_EQ(marvo_setting_get_text(info.name, before, sizeof before, nullptr), MARVO_OK) << info.name;
        const std::string other = info.type == MARVO_SETTING_TEXT ? "\xC3\xA4nders.avi"
                                  : info.type == MARVO_SETTING_FLAG
                                      ? (std::string(before) == "yes" ? "no" : "yes")
                                      : std::to_string(info.most);
        EXPECT_EQ(marvo_setting_set_text(info.name, other.c_str()), MARVO_OK) << marvo_last_error();
        char after[512] = "";
        EXPECT_EQ(marvo_setting_get_text(info.name, after, sizeof after, nullptr), MARVO_OK);
        EXPECT_EQ(after, other) << info.name;
        if (info.type == MARVO_SETTING_NUMBER) {
            EXPECT_EQ(marvo_setting_set_number(info.name, info.least - 1), MARVO_E_RANGE) << info.name;
            EXPECT_EQ(marvo_setting_set_text(info.name, "12x"), MARVO_E_ARGUMENT) << info.name;
        }
        EXPECT_EQ(marvo_setting_set_text(info.name, before), MARVO_OK) << info.name;
    }
    char small[4] = "";
    marvo_u32 needed = 0;
    EXPECT_EQ(marvo_setting_set_text("engine.recfile", "a\xC3\xA4\xC3\xA4.dv"), MARVO_OK);
    EXPECT_EQ(marvo_setting_get_text("engine.recfile", small, sizeof small, &needed), MARVO_E_BUFFER);
    EXPECT_STREQ(small, "a\xC3\xA4");
    EXPECT_EQ(needed, 9u);
    EXPECT_EQ(marvo_setting_set_number("engine.recfile", 1), MARVO_E_ARGUMENT);
    EXPECT_EQ(marvo_command("set dv.playdelay 250"), MARVO_OK);
    marvo_i64 value = 0;
    EXPECT_EQ(marvo_setting_get_number("dv.playdelay", &value), MARVO_OK);
    EXPECT_EQ(value, 250);
    EXPECT_EQ(marvo_command("set dv.playdelay"), MARVO_E_ARGUMENT);
    EXPECT_EQ(marvo_command("replay 1 2 \"open"), MARVO_E_ARGUMENT);
    EXPECT_EQ(marvo_command("fly"), MARVO_E_UNKNOWN);
}

int MARVO_CALL stop(void* calls, marvo_u64, marvo_u64) {
    return ++*static_cast<int*>(calls) > 1;
}

int MARVO_CALL count(void* findings, marvo_u64, const char* text) {
    *static_cast<int*>(findings) += *text != 0;
    return 0;
}

TEST(Recordings, AreWrittenReadVerifiedRepairedAndCopied) {
    const File raw("flat_raw.dv"), avi("flat.avi"), cut("flat_cut.avi"), whole("flat_whole.avi");
    const auto frames = streamFrames(6);
    makeRecording(raw, MARVO_KIND_BY_NAME, frames);
    marvo_writer* writer = nullptr;
    EXPECT_EQ(marvo_writer_create(raw, 0, MARVO_SYSTEM_625, 0, &writer), MARVO_E_EXISTS);
    auto options = sized<marvo_copy_options>();
    options.first = 1;
    options.last = MARVO_TO_THE_END;
    auto copied = sized<marvo_copy_result>();
    ASSERT_EQ(marvo_export(raw, avi, &options, nullptr, nullptr, &copied), MARVO_OK) << marvo_last_error();
    EXPECT_EQ(copied.frames, 5u);
    EXPECT_EQ(copied.kind, MARVO_KIND_AVI);
    EXPECT_EQ(copied.bytes, std::ifstream(avi.name, std::ios::ate | std::ios::binary).tellg());
    EXPECT_EQ(marvo_export(raw, avi, nullptr, nullptr, nullptr, nullptr), MARVO_E_EXISTS);
    options.flags = MARVO_REPLACE;
    options.last = 6;
    EXPECT_EQ(marvo_export(raw, avi, &options, nullptr, nullptr, nullptr), MARVO_E_RANGE);
    int calls = 0;
    options.last = 5;
    EXPECT_EQ(marvo_export(raw, whole, &options, stop, &calls, nullptr), MARVO_E_CANCELLED);
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(std::ifstream(whole.name));

    marvo_reader* reader = nullptr;
    ASSERT_EQ(marvo_reader_open(avi, &reader), MARVO_OK) << marvo_last_error();
    auto info = sized<marvo_recording_info>();
    ASSERT_EQ(marvo_reader_info(reader, &info), MARVO_OK);
    EXPECT_TRUE(info.frames == 5 && info.system == MARVO_SYSTEM_625 && info.duration_100ns == 5 * 400000 &&
                info.end == MARVO_END_FINISHED && info.frame_bytes == frameBytes);
    std::vector<unsigned char> frame(frameBytes);
    auto notes = sized<marvo_frame_info>();
    for (marvo_u64 n = 0; n < 5; ++n) {
        ASSERT_EQ(marvo_reader_read(reader, n, frame.data(), frameBytes, &notes), MARVO_OK)
            << marvo_last_error();
        EXPECT_EQ(std::memcmp(frame.data(), &frames[(n + 1) * frameBytes], frameBytes), 0) << n;
    }
    EXPECT_EQ(notes.source, MARVO_SOURCE_FILE);
    EXPECT_EQ(marvo_reader_read(reader, 5, frame.data(), frameBytes, nullptr), MARVO_E_RANGE);
    notes.bytes = 0;
    EXPECT_EQ(marvo_reader_read(reader, 0, frame.data(), 100, &notes), MARVO_E_BUFFER);
    EXPECT_EQ(notes.bytes, frameBytes);
    EXPECT_EQ(marvo_reader_close(reader), MARVO_OK);
    EXPECT_EQ(marvo_reader_close(reader), MARVO_E_HANDLE);

    std::ifstream from(avi.name, std::ios::binary);
    std::vector<char> start(static_cast<std::size_t>(copied.bytes) - 2 * frameBytes);
    from.read(start.data(), static_cast<std::streamsize>(start.size()));
    std::ofstream(cut.name, std::ios::binary).write(start.data(), static_cast<std::streamsize>(start.size()));
    int findings = 0;
    auto verified = sized<marvo_verify_result>();
    EXPECT_EQ(marvo_verify(avi, count, nullptr, &findings, &verified), MARVO_OK);
    EXPECT_EQ(verified.faults, 0u);
    EXPECT_EQ(marvo_verify(cut, count, nullptr, &findings, &verified), MARVO_OK) << marvo_last_error();
    EXPECT_EQ(verified.faults, static_cast<marvo_u64>(findings));
    EXPECT_GT(findings, 0);
    ASSERT_EQ(marvo_repair(cut, whole, 0, nullptr, nullptr, &copied), MARVO_OK) << marvo_last_error();
    EXPECT_TRUE(copied.frames >= 3 && copied.frames + copied.lost == 5)
        << copied.frames << " " << copied.lost;
    EXPECT_EQ(marvo_verify(whole, nullptr, nullptr, nullptr, &verified), MARVO_OK);
    EXPECT_EQ(verified.faults, 0u);
    EXPECT_EQ(marvo_verify("flat_test.cpp.no", nullptr, nullptr, nullptr, nullptr), MARVO_E_FILE);
}

TEST(Frames, AreDecodedAndHeard) {
    const auto frame = streamFrames(1);
    marvo_decoder* decoder = nullptr;
    ASSERT_EQ(marvo_decoder_open(&decoder), MARVO_OK);
    auto picture = sized<marvo_picture_info>();
    std::vector<unsigned char> pixels(720 * 576 * 4);
    EXPECT_EQ(marvo_decoder_decode(decoder, frame.data(), frameBytes, pixels.data(), 100, &picture),
              MARVO_E_BUFFER);
    EXPECT_EQ(picture.bytes, pixels.size());
    const auto room = static_cast<marvo_u32>(pixels.size());
    EXPECT_EQ(marvo_decoder_decode(decoder, frame.data(), frameBytes, pixels.data(), room, &picture),
              MARVO_OK)
        << marvo_last_error();
    EXPECT_TRUE(pixels[3] == 255 && pixels.back() == 255);
    EXPECT_NE(std::count(pixels.begin(), pixels.end(), pixels[0]),
              static_cast<std::ptrdiff_t>(pixels.size()));
    EXPECT_EQ(marvo_decoder_decode(decoder, frame.data(), 500, nullptr, 0, nullptr), MARVO_E_FORMAT);
    EXPECT_EQ(marvo_reader_close(reinterpret_cast<marvo_reader*>(decoder)), MARVO_E_HANDLE);
    EXPECT_EQ(marvo_decoder_close(decoder), MARVO_OK);
    auto sound = sized<marvo_sound_info>();
    std::vector<short> samples(8 * 1944);
    EXPECT_EQ(marvo_frame_sound(frame.data(), frameBytes, samples.data(), 8 * 1944, &sound), MARVO_OK);
    auto notes = sized<marvo_frame_info>();
    EXPECT_EQ(marvo_frame_describe(frame.data(), frameBytes, &notes), MARVO_OK);
    EXPECT_TRUE(notes.system == MARVO_SYSTEM_625 && notes.number == MARVO_NO_FRAME);
}

/// What the callbacks got.
struct Heard {
    std::atomic<int> events{0}, lines{0}, running{0};
    std::atomic<bool> block{false};
    std::atomic<DWORD> thread{0};
    int inCallback = -1;
};

void MARVO_CALL onEvent(void* user, const marvo_event* event) {
    auto& to = *static_cast<Heard*>(user);
    ++to.running;
    to.thread = GetCurrentThreadId();
    to.inCallback = marvo_pause();
    while (to.block) {
        Sleep(1);
    }
    to.events += event->kind == MARVO_EVENT_RECORD_STARTED;
    --to.running;
}

void MARVO_CALL onLine(void* user, const char* line) {
    static_cast<Heard*>(user)->lines += std::strstr(line, "hello from a test") != nullptr;
}

TEST(Engine, TellsByCallbackAndQueueWhatIsFed) {
    const File recorded("flat_fed.dv");
    const auto frames = streamFrames(1);
    Heard heard;
    ASSERT_EQ(marvo_set_event_callback(onEvent, &heard), MARVO_OK) << marvo_last_error();
    ASSERT_EQ(marvo_set_log_callback(onLine, &heard), MARVO_OK);
    EXPECT_EQ(marvo_log("hello from a test"), MARVO_OK);
    EXPECT_TRUE(await([&] { return heard.lines == 1; }));

    marvo_feed* feed = nullptr;
    marvo_feed* second = nullptr;
    EXPECT_EQ(marvo_feed_open(3, &feed), MARVO_E_ARGUMENT);
    ASSERT_EQ(marvo_feed_open(MARVO_SYSTEM_625, &feed), MARVO_OK) << marvo_last_error();
    EXPECT_EQ(marvo_feed_open(MARVO_SYSTEM_625, &second), MARVO_E_STATE);
    EXPECT_EQ(marvo_feed_add(feed, frames.data(), frameBytes), MARVO_E_STATE);
    ASSERT_EQ(marvo_init(nullptr), MARVO_OK) << marvo_last_error();
    auto event = sized<marvo_event>();
    while (marvo_event_next(&event, 0) == MARVO_OK) {
    }
    heard.block = true;
    ASSERT_EQ(marvo_record_start(recorded), MARVO_OK) << marvo_last_error();
    EXPECT_EQ(marvo_feed_add(feed, frames.data(), 120000), MARVO_E_FORMAT);
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(marvo_feed_add(feed, frames.data(), frameBytes), MARVO_OK) << marvo_last_error();
    }
    std::thread([] {
        EXPECT_EQ(marvo_done(), MARVO_E_THREAD);
        EXPECT_EQ(marvo_live(), MARVO_OK);
    }).join();
    auto status = sized<marvo_status_info>();
    EXPECT_TRUE(await([&] { return marvo_status(&status) == MARVO_OK && status.written == 3; }));
    EXPECT_TRUE(status.recording && status.taken == 3 && status.next_frame == 3 && !status.busy)
        << status.taken;
    EXPECT_EQ(status.built, MARVO_BUILT_ALL);
    ASSERT_EQ(marvo_event_next(&event, 20000), MARVO_OK);
    EXPECT_EQ(event.kind, MARVO_EVENT_RECORD_STARTED);
    EXPECT_EQ(marvo_event_next(&event, 0), MARVO_E_EMPTY);

    // Removing a callback waits until it is out.
    EXPECT_TRUE(await([&] { return heard.running == 1; }));
    std::thread releaser([&] {
        Sleep(50);
        heard.block = false;
    });
    EXPECT_EQ(marvo_set_event_callback(nullptr, nullptr), MARVO_OK);
    EXPECT_EQ(heard.running, 0);
    releaser.join();
    EXPECT_TRUE(heard.events == 1 && heard.inCallback == MARVO_OK && heard.thread != GetCurrentThreadId());
    EXPECT_EQ(marvo_set_log_callback(nullptr, nullptr), MARVO_OK);

    EXPECT_EQ(marvo_replay(0, 2, "no such.dv"), MARVO_E_FILE) << marvo_last_error();
    EXPECT_EQ(marvo_element_play(5), MARVO_E_STATE);
    EXPECT_EQ(marvo_done(), MARVO_OK);
    EXPECT_EQ(marvo_feed_close(feed), MARVO_OK);
    EXPECT_EQ(marvo_feed_add(feed, frames.data(), frameBytes), MARVO_E_HANDLE);
    EXPECT_TRUE(await(
        [&] { return marvo_event_next(&event, 0) == MARVO_OK && event.kind == MARVO_EVENT_RECORD_ENDED; }));
    EXPECT_EQ(event.count, 3u);
}

} // namespace
