/* A whole host in C: a window with the live picture, recorded. The space bar shows the last five seconds
 * again in slow motion, the arrow keys step, any other key goes back to live.
 *
 *     marvo-c-host                 with a window for people
 *     marvo-c-host --session       goes through a session by itself, and leaves the frames that it read from
 * the recording while it ran ("running.bin") and behind its end ("finished.bin") marvo-c-host --feed STREAM
 * the same with the frames of a DV stream instead of a camera
 */
#include "marvo_c.h"

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define FRAME_BYTES 144000
#define FEED_MS 40
#define REPLAYED 10
#define LIMIT_MS 40000

static const char recording[] = "c_host.avi";
static unsigned char frame[MARVO_MOST_FRAME_BYTES];

/* Ends the program with the library's own words when a call has failed. */
static void must(int result, const char* what) {
    if (result != MARVO_OK) {
        fprintf(stderr, "marvo-c-host: %s: %s: %s\n", what, marvo_result_name(result), marvo_last_error());
        exit(1);
    }
}

static void expect(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "marvo-c-host: this did not come: %s\n", what);
        exit(1);
    }
}

static marvo_status_info statusNow(void) {
    marvo_status_info status;
    status.size = sizeof status;
    must(marvo_status(&status), "status");
    return status;
}

/* Everything that happens, as lines. Comes on the library's thread. */
static void MARVO_CALL onEvent(void* user, const marvo_event* event) {
    fprintf((FILE*)user, "event %d: %s\n", (int)event->kind, event->text);
}

static void MARVO_CALL onTick(void* user, const marvo_play_info* play) {
    if (play->frame != MARVO_NO_FRAME) {
        InterlockedIncrement((LONG*)user);
    }
}

static void showLastSeconds(void) {
    const marvo_status_info status = statusNow();
    const marvo_u64 span = 5 * (marvo_u64)status.frames_per_second;
    const marvo_u64 from = status.next_frame > span ? status.next_frame - span : 0;
    if (marvo_replay(from, status.next_frame, recording) == MARVO_OK) {
        marvo_set_speed(0.5);
    }
}

static LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_KEYDOWN:
        if (first == VK_SPACE) {
            showLastSeconds();
        } else if (first == VK_LEFT || first == VK_RIGHT) {
            marvo_step(first == VK_LEFT ? -1 : 1);
        } else {
            marvo_live();
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, first, second);
    }
}

static HWND makeWindow(void) {
    WNDCLASSW type;
    memset(&type, 0, sizeof type);
    type.lpfnWndProc = onMessage;
    type.hInstance = GetModuleHandleW(NULL);
    type.lpszClassName = L"marvo C host";
    RegisterClassW(&type);
    return CreateWindowExW(0, type.lpszClassName, L"marvo", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CW_USEDEFAULT,
                           CW_USEDEFAULT, 740, 620, NULL, NULL, type.hInstance, NULL);
}

static marvo_feed* feed = NULL;
static FILE* stream = NULL;
static DWORD fedAt = 0;

/* Hands the stream's next frame over when it is time, as a camera would send it. */
static void feedFrame(void) {
    if (!feed || GetTickCount() - fedAt < FEED_MS) {
        return;
    }
    fedAt = GetTickCount();
    if (fread(frame, 1, FRAME_BYTES, stream) != FRAME_BYTES) {
        rewind(stream);
        expect(fread(frame, 1, FRAME_BYTES, stream) == FRAME_BYTES, "a frame in the stream");
    }
    must(marvo_feed_add(feed, frame, FRAME_BYTES), "feeding");
}

/* Takes the window's messages for a moment. */
static void pump(void) {
    MSG message;
    while (PeekMessageW(&message, NULL, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
    feedFrame();
    Sleep(2);
}

/* What is waited for: a state of the engine and a number. */
typedef int (*Condition)(const marvo_status_info* status, marvo_u64 number);

static int hasFrames(const marvo_status_info* status, marvo_u64 number) {
    return status->next_frame >= number;
}
static int isSafe(const marvo_status_info* status, marvo_u64 number) {
    return status->written >= number;
}
static int shows(const marvo_status_info* status, marvo_u64 number) {
    return status->shown_frame == number;
}
static int isLive(const marvo_status_info* status, marvo_u64 number) {
    return !status->replaying && status->shown_frame != MARVO_NO_FRAME && status->shown_frame >= number;
}

static void await(Condition condition, marvo_u64 number, const char* what) {
    const DWORD begin = GetTickCount();
    marvo_status_info status = statusNow();
    while (!condition(&status, number) && GetTickCount() - begin < LIMIT_MS) {
        pump();
        status = statusNow();
    }
    if (!condition(&status, number)) {
        fprintf(stderr, "shown %lu, next %lu, written %lu, replaying %d\n", (unsigned long)status.shown_frame,
                (unsigned long)status.next_frame, (unsigned long)status.written, status.replaying);
    }
    expect(condition(&status, number), what);
}

/* Waits for an event of a kind in the queue, behind whatever came before. */
static void awaitEvent(int kind, const char* what) {
    marvo_event event;
    event.size = sizeof event;
    do {
        must(marvo_event_next(&event, LIMIT_MS), what);
    } while (event.kind != kind);
}

static void copyOut(FILE* to, int result, marvo_u32 bytes, const char* what) {
    must(result, what);
    expect(to != NULL && bytes == FRAME_BYTES && fwrite(frame, 1, bytes, to) == bytes, "a frame in a file");
}

static void replayAll(void) {
    must(marvo_replay(3, 3 + REPLAYED - 1, NULL), "replay");
    awaitEvent(MARVO_EVENT_REPLAY_STARTED, "the replay's event");
    await(shows, 3 + REPLAYED - 1, "the end of the replay");
    await(shows, 3, "its start again");
    must(marvo_pause(), "pause");
    must(marvo_seek(5), "seek");
    await(shows, 5, "the frame that was asked for");
    must(marvo_step(-1), "step");
    must(marvo_step(-1), "step");
    await(shows, 3, "two frames before it");
    must(marvo_command("resume"), "a command as text");
    must(marvo_marker("XI0700006"), "marker");
    must(marvo_marker("XO0700008"), "marker");
    must(marvo_element_play(7), "element");
    await(shows, 8, "the element's end");
}

static void readRunning(marvo_u64 frames) {
    FILE* const to = fopen("running.bin", "wb");
    marvo_frame_info info;
    marvo_u64 n;
    int fromRing = 0;
    int fromFile = 0;
    info.size = sizeof info;
    for (n = 0; n < frames; ++n) {
        const int result = marvo_frame_read(n, frame, sizeof frame, &info);
        copyOut(to, result, info.bytes, "a frame of the running recording");
        fromRing += info.source == MARVO_SOURCE_RING;
        fromFile += info.source == MARVO_SOURCE_FILE;
    }
    n = statusNow().next_frame - 1;
    copyOut(to, marvo_frame_read(n, frame, sizeof frame, &info), info.bytes, "the newest frame");
    fromRing += info.source == MARVO_SOURCE_RING;
    fclose(to);
    printf("running: %d from the ring, %d from the file\n", fromRing, fromFile);
}

static void readFinished(void) {
    FILE* const to = fopen("finished.bin", "wb");
    marvo_reader* reader = NULL;
    marvo_recording_info what;
    marvo_frame_info info;
    marvo_u64 n;
    what.size = sizeof what;
    info.size = sizeof info;
    must(marvo_reader_open(recording, &reader), "opening the recording");
    must(marvo_reader_info(reader, &what), "what it is");
    for (n = 0; n < what.frames; ++n) {
        const int result = marvo_reader_read(reader, n, frame, sizeof frame, &info);
        copyOut(to, result, info.bytes, "a frame of the finished recording");
    }
    must(marvo_reader_close(reader), "closing it");
    fclose(to);
    printf("finished: %lu frames, end %d\n", (unsigned long)what.frames, (int)what.end);
}

/* From the first frame to the last, with replays; everything that it does has to come true. */
static void session(HWND window, const char* feedFrom) {
    LONG ticks = 0;
    must(marvo_set_event_callback(onEvent, stdout), "event callback");
    must(marvo_set_play_callback(onTick, &ticks), "play callback");
    must(marvo_setting_set_text("engine.playfile", recording), "setting");
    must(marvo_setting_set_number("engine.recframes", 20), "setting");
    if (feedFrom) {
        stream = fopen(feedFrom, "rb");
        expect(stream != NULL, "a DV stream");
        must(marvo_feed_open(MARVO_SYSTEM_625, &feed), "feed");
    }
    must(marvo_init(window), "init");
    must(marvo_record_start(recording), "record");
    awaitEvent(MARVO_EVENT_RECORD_STARTED, "the recording's event");
    await(hasFrames, 30, "30 frames");
    await(isSafe, 30, "30 frames in the file");
    replayAll();
    readRunning(30);
    must(marvo_live(), "live");
    awaitEvent(MARVO_EVENT_REPLAY_ENDED, "the end of the replay");
    await(isLive, 30, "the live picture");
    must(marvo_record_stop(), "stop");
    awaitEvent(MARVO_EVENT_RECORD_ENDED, "the end of the recording");
    expect(statusNow().complete, "a whole file");
    must(marvo_done(), "done");
    if (feed) {
        must(marvo_feed_close(feed), "closing the feed");
        fclose(stream);
    }
    must(marvo_set_play_callback(NULL, NULL), "play callback");
    must(marvo_set_event_callback(NULL, NULL), "event callback");
    expect(ticks > 0, "ticks");
    readFinished();
}

static void people(HWND window) {
    MSG message;
    must(marvo_init(window), "init");
    must(marvo_record_start(recording), "record");
    while (GetMessageW(&message, NULL, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    must(marvo_done(), "done");
}

int main(int count, char** arguments) {
    const HWND window = makeWindow();
    if (count > 1 && strcmp(arguments[1], "--session") == 0) {
        session(window, NULL);
    } else if (count > 2 && strcmp(arguments[1], "--feed") == 0) {
        session(window, arguments[2]);
    } else {
        people(window);
    }
    return 0;
}
