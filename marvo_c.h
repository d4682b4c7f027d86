/** @file
 * marvo in any language: the flat C interface of the replay engine, from the same DLL as the C++ classes.
 * C89, C++, and whatever can call a DLL's functions; no Windows header is needed.
 *
 * ## Conventions
 *
 * - **Results.** Every function returns one of ::marvo_result: 0 is good, everything else says why not, and
 *   marvo_last_error() then gives the calling thread a sentence that a person can act on. Exceptions are
 *   marvo_version(), marvo_version_text(), marvo_last_error() and marvo_result_name(), which cannot fail. A
 * null, a number out of range, a handle that is no handle (any more) and a call out of order give a code and
 * change nothing. No C++ exception comes out, and none may leave a callback.
 * - **Text** is UTF-8 and ends with a zero. Text that is not valid UTF-8 is refused. A function that gives
 * text takes a buffer, its size in bytes, and (may be null) where to put the size that is needed with the
 * zero. When the buffer is too small or null, the result is ::MARVO_E_BUFFER; a buffer that is there then
 * holds as much as fits, cut between characters.
 * - **Structures** begin with `size`. The caller sets it to `sizeof` its own structure before the call. A
 * program that was built with an older header has shorter ones, and gets as much as they hold; in one that is
 * longer than this library's the rest is filled with zeros. Members are aligned naturally, so all compilers
 * for Windows lay them out in the same way, for 32 bits as for 64. Where a structure is read by the library
 * (`marvo_copy_options`), what a shorter one lacks is 0. A size below 8 or above 65536 is refused.
 * - **Yes and no** are ints: 0 is no, everything else yes; the library gives 1.
 * - **Frame numbers** count from 0 in each recording. ::MARVO_NO_FRAME stands for none.
 * - **Handles** are opaque; a value that the library did not give, or that was closed, is refused with
 *   ::MARVO_E_HANDLE and never followed.
 * - **Growth.** Functions, members at the end of structures, and constants are only ever added.
 *
 * ## Threads
 *
 * Any thread may call any function, but for the *window commands*: marvo_init(), marvo_play_init(),
 * marvo_show(), marvo_hide(), marvo_set_video_size(), marvo_set_video_pos(), marvo_window_destroyed() and
 * marvo_done(). Windows belong to threads: a window that is given is one of the calling thread's, which takes
 * its messages; and while the engine is built, the window commands belong to the thread that built it, unless
 * that thread has ended. From another thread they give ::MARVO_E_THREAD.
 *
 * The commands of the engine are carried out one at a time: a thread waits while another one's command is
 * carried out. A command that is called from inside another one on the same thread (a window procedure that
 * Windows calls meanwhile) gives ::MARVO_E_BUSY. marvo_status(), marvo_play(), marvo_frame_read(), the
 * events, the log, and everything that works on a handle or on files without the engine never wait for a
 * command. Calls on one handle are carried out one at a time; different handles do not disturb each other.
 *
 * Callbacks of marvo_set_event_callback(), marvo_set_log_callback() and marvo_set_play_callback() come on one
 * thread of the library's own, which exists while one of them is set, one call at a time, and with no lock
 * held: they may call any function but the window commands (which belong to another thread). A slow callback
 * delays the other callbacks and nothing else. Once a function that removes or replaces a callback has
 * returned, the old one is not running and is not called again; called inside of that callback itself it does
 * not wait. So do not remove a callback while holding a lock that the callback waits for. The ::marvo_work_fn
 * and ::marvo_finding_fn given to a function are called on the calling thread, before that function returns.
 *
 * While an engine is built or a callback is set, the library stays loaded, whatever the host frees; call
 * marvo_done() and remove the callbacks first. A process may end at any time.
 */
#ifndef MARVO_C_H
#define MARVO_C_H

#if defined(_WIN32) && !defined(_WIN64)
/** The calling convention of functions and callbacks: stdcall on 32-bit Windows, the only one elsewhere. */
#define MARVO_CALL __stdcall
#else
#define MARVO_CALL
#endif

#if defined(_MSC_VER) || defined(__BORLANDC__) || defined(__WATCOMC__)
typedef signed __int64 marvo_i64;
typedef unsigned __int64 marvo_u64;
#elif defined(__GNUC__)
__extension__ typedef signed long long marvo_i64;
__extension__ typedef unsigned long long marvo_u64;
#else
typedef signed long long marvo_i64;   /**< 64 bits with a sign, aligned to 8 bytes */
typedef unsigned long long marvo_u64; /**< 64 bits, aligned to 8 bytes */
#endif
typedef int marvo_i32;          /**< 32 bits with a sign */
typedef unsigned int marvo_u32; /**< 32 bits */

#ifdef __cplusplus
extern "C" {
#endif

/** No frame. */
#define MARVO_NO_FRAME (~(marvo_u64)0)
/** As the last frame of a range: up to the end. */
#define MARVO_TO_THE_END (~(marvo_u64)0)
/** A number that is not known. */
#define MARVO_UNKNOWN (~(marvo_u64)0)
/** No frame of any recording has more bytes. */
#define MARVO_MOST_FRAME_BYTES 576000

/** What a function says. */
enum marvo_result {
    MARVO_OK = 0,           /**< done */
    MARVO_E_ARGUMENT = 1,   /**< a null, a text that is no UTF-8, a value that has no meaning */
    MARVO_E_HANDLE = 2,     /**< no handle of this kind, or not any more */
    MARVO_E_STATE = 3,      /**< out of order: something has to be done before */
    MARVO_E_THREAD = 4,     /**< a window command on another thread than the engine's, or the window's */
    MARVO_E_BUSY = 5,       /**< inside another command on the same thread */
    MARVO_E_RANGE = 6,      /**< a number, a size or a frame out of range */
    MARVO_E_UNKNOWN = 7,    /**< no setting, command or device of that name or number */
    MARVO_E_BUFFER = 8,     /**< the buffer is too small; what is needed was told */
    MARVO_E_FILE = 9,       /**< a file cannot be opened, read or written */
    MARVO_E_EXISTS = 10,    /**< there is a file of that name, and it is not to be replaced */
    MARVO_E_FORMAT = 11,    /**< no recording, or no DV frame */
    MARVO_E_DEVICE = 12,    /**< no such capture device, or it does not work */
    MARVO_E_SYSTEM = 13,    /**< a part of the system is missing or refuses: decoder, renderer, window */
    MARVO_E_CANCELLED = 14, /**< a callback asked for it */
    MARVO_E_MEMORY = 15,    /**< there is not enough memory */
    MARVO_E_EMPTY = 16,     /**< nothing is waiting */
    MARVO_E_REFUSED = 17    /**< the engine refused the command; its log says more */
};

/** What a recording file is. */
enum marvo_kind {
    MARVO_KIND_BY_NAME = 0, /**< as a choice: what the file's name means */
    MARVO_KIND_RAW = 1,     /**< the engine's own records, one per frame; no player opens them */
    MARVO_KIND_AVI = 2,     /**< AVI with a DV video stream */
    MARVO_KIND_STREAM = 3   /**< DV frames one behind the other and nothing else */
};

/** The two systems of DV. */
enum marvo_system {
    MARVO_SYSTEM_UNKNOWN = 0, /**< not known (yet) */
    MARVO_SYSTEM_625 = 1,     /**< 625/50 ("PAL"): 144000 bytes, 25 frames a second */
    MARVO_SYSTEM_525 = 2      /**< 525/60 ("NTSC"): 120000 bytes, 29.97 frames a second */
};

/** @name Version and errors
 * @{ */

/** The library's version: major * 65536 + minor * 256 + patch. */
marvo_u32 MARVO_CALL marvo_version(void);

/** The same as text, "1.2.3". Owned by the library, valid as long as it is loaded. */
const char* MARVO_CALL marvo_version_text(void);

/** Why the last function that failed on this thread failed, as one sentence that names what it is about (the
 * file, the setting) and the system's reason; empty before the first. Owned by the library, valid until the
 * next call on this thread. A call that succeeds leaves it as it is. */
const char* MARVO_CALL marvo_last_error(void);

/** A result's name ("MARVO_E_FILE"), or "unknown". Owned by the library. */
const char* MARVO_CALL marvo_result_name(int result);

/** @}
 * @name The engine: building, window, taking apart
 * There is one engine in a process, so these have no handle.
 * @{ */

/** Builds the engine on the capture device of the setting "dv.input" (or on the open feed, see
 * marvo_feed_open()), runs it and shows the live picture in `window` (a HWND; null: hidden until
 * marvo_show()). Waits up to 5 s for the first frames of a device; none is no failure. When it is built
 * already, as marvo_show(). A window command.
 * @return MARVO_E_DEVICE without such a device, MARVO_E_SYSTEM when decoder, renderer or graph cannot be had.
 */
int MARVO_CALL marvo_init(void* window);

/** Builds the engine without a capture device, to replay the frames `from` to `to` of the recording `file` in
 * `window`; what was built before is taken apart. A window command. */
int MARVO_CALL marvo_play_init(void* window, marvo_u64 from, marvo_u64 to, const char* file);

/** Ends recording and replay and takes the engine apart. Nothing built is no failure. A window command. */
int MARVO_CALL marvo_done(void);

/** Fits the picture into `window` and shows it there; null hides it. Builds the engine when it is not built,
 * and makes a picture that has failed anew. A window command. */
int MARVO_CALL marvo_show(void* window);

/** Takes the picture out of its window and hides it. A window command. */
int MARVO_CALL marvo_hide(void);

/** Sets the picture's size in pixels. A window command. */
int MARVO_CALL marvo_set_video_size(int width, int height);

/** Sets the picture's position in its window in pixels. A window command. */
int MARVO_CALL marvo_set_video_pos(int x, int y);

/** The host is destroying the window that the picture is in (to be called at WM_DESTROY). A window command.
 */
int MARVO_CALL marvo_window_destroyed(void);

/** The number of capture devices. */
int MARVO_CALL marvo_device_count(marvo_u32* count);

/** The name of capture device `number`, counted from 0, into `buffer`. */
int MARVO_CALL marvo_device_name(marvo_u32 number, char* buffer, marvo_u32 capacity, marvo_u32* needed);

/** @}
 * @name Recording and replay
 * @{ */

/** Records what is captured from now on into `file` (null or empty: the setting "engine.recfile"), in place
 * of a file of that name. A name with ".avi" makes an AVI file, any other a raw recording. Frames are
 * numbered from 0 again, play goes live, and all elements are unset. */
int MARVO_CALL marvo_record_start(const char* file);

/** Ends the recording and completes its file; waits up to 5 s. None running is no failure. */
int MARVO_CALL marvo_record_stop(void);

/** Has the system write what it holds of the recording. */
int MARVO_CALL marvo_record_flush(void);

/** Back to the newest frame, at speed 1, not held. */
int MARVO_CALL marvo_live(void);

/** Plays frames `from` to `to` (both included, in either order) at speed 1, again and again, from `file`, or
 * (null or empty) from the setting "engine.playfile". A range that reaches beyond the recording is cut to it.
 * The replay goes on until marvo_live() or another one. */
int MARVO_CALL marvo_replay(marvo_u64 from, marvo_u64 to, const char* file);

/** Holds the shown frame. */
int MARVO_CALL marvo_pause(void);

/** Lets it go on. */
int MARVO_CALL marvo_resume(void);

/** Frames per tick: fractions slow down, negative values play backward, 0 holds. MARVO_E_RANGE for what is no
 * number. */
int MARVO_CALL marvo_set_speed(double factor);

/** Shows `frame` next; in a replay it is wrapped into the range, and played from there. */
int MARVO_CALL marvo_seek(marvo_u64 frame);

/** Holds the picture and moves it by `frames` (negative: back), in a replay around its ends, else not before
 * frame 0. MARVO_E_STATE before the first picture. */
int MARVO_CALL marvo_step(marvo_i64 frames);

/** Sets both points of element `number` (0 to 127) of the recording; MARVO_NO_FRAME leaves or makes a point
 * unset. Element 0 can be set, but not played. */
int MARVO_CALL marvo_element_set(marvo_u32 number, marvo_u64 in, marvo_u64 out);

/** The points of element `number`; MARVO_NO_FRAME for one that is unset. */
int MARVO_CALL marvo_element_get(marvo_u32 number, marvo_u64* in, marvo_u64* out);

/** Replays element `number` (1 to 127) from the setting "engine.playfile". MARVO_E_STATE unless both points
 * are set. */
int MARVO_CALL marvo_element_play(marvo_u32 number);

/** Takes a marker of a timing or control source: "XInnFRAME" and "XOnnFRAME" set the in and out point of
 * element nn, "XR" starts the clock and the first "Z+" after it stops it; anything else is only logged, and
 * everything while the setting "dv.control" is off. */
int MARVO_CALL marvo_marker(const char* text);

/** Carries out a command given as a line of text: one word, then its arguments, separated by blanks, those
 * with blanks in double quotes: `live`, `pause`, `resume`, `replay FROM TO [FILE]`, `record [FILE]`, `stop`,
 * `flush`, `speed FACTOR`, `seek FRAME`, `step FRAMES`, `element NUMBER`, `mark NUMBER IN OUT`, `marker
 * TEXT`, `set NAME VALUE`, `log TEXT`. Each is what the function of that name does. MARVO_E_UNKNOWN for
 * another word, MARVO_E_ARGUMENT for wrong arguments. */
int MARVO_CALL marvo_command(const char* line);

/** Writes `text` as a line into the engine's log. */
int MARVO_CALL marvo_log(const char* text);

/** @}
 * @name Settings
 * Their names are those of docs/settings.md ("dv.input") and these, which no file sets: "engine.recfile" and
 * "engine.playfile" (where to record to and replay from), "engine.recframes" (frames of the ring, for the
 * next marvo_init()) and "engine.playframes" (frames that a replay may hold in memory, for the next one).
 * Letter case counts.
 * @{ */

/** The type of a setting. */
enum marvo_setting_type {
    MARVO_SETTING_FLAG = 1,   /**< yes or no */
    MARVO_SETTING_NUMBER = 2, /**< a whole number */
    MARVO_SETTING_TEXT = 3    /**< a text */
};

/** What there is to know of a setting. */
typedef struct marvo_setting_info {
    marvo_u32 size;    /**< bytes of this structure, set by the caller */
    marvo_i32 type;    /**< ::marvo_setting_type */
    marvo_i64 least;   /**< of a number */
    marvo_i64 most;    /**< see there */
    char name[64];     /**< its name */
    char meaning[192]; /**< what it means, in words */
} marvo_setting_info;

/** The number of settings. */
int MARVO_CALL marvo_setting_count(marvo_u32* count);

/** Describes the setting `number`, counted from 0. */
int MARVO_CALL marvo_setting_describe(marvo_u32 number, marvo_setting_info* info);

/** The value of a flag or number. */
int MARVO_CALL marvo_setting_get_number(const char* name, marvo_i64* value);

/** Sets a flag (0 or 1) or a number. MARVO_E_RANGE outside of its range. */
int MARVO_CALL marvo_setting_set_number(const char* name, marvo_i64 value);

/** The value of any setting as text; a flag is "yes" or "no". */
int MARVO_CALL marvo_setting_get_text(const char* name, char* buffer, marvo_u32 capacity, marvo_u32* needed);

/** Sets any setting from text, a flag or a number from what marvo_setting_get_text() gives. */
int MARVO_CALL marvo_setting_set_text(const char* name, const char* value);

/** @}
 * @name How it goes
 * @{ */

/** How the camera is. */
enum marvo_camera {
    MARVO_CAMERA_NONE = 0,   /**< no capture is built */
    MARVO_CAMERA_LIVE = 1,   /**< frames come */
    MARVO_CAMERA_SILENT = 2, /**< it is there, but no frame has come for a second */
    MARVO_CAMERA_GONE = 3,   /**< it is gone, or has failed */
    MARVO_CAMERA_CHANGED = 4 /**< it came back with other frames; capture stands still until marvo_init() */
};

/** What is built. */
enum marvo_built {
    MARVO_BUILT_NOTHING = 0, /**< nothing */
    MARVO_BUILT_ALL = 1,     /**< capture and play */
    MARVO_BUILT_PLAY = 2     /**< play alone, by marvo_play_init() */
};

/** What disturbs the picture: bits of `picture_faults`. */
enum marvo_fault {
    MARVO_FAULT_NO_TICKS =
        1, /**< for a second the clock has given no tick; the picture goes on, eight a second */
    MARVO_FAULT_REFUSED = 2, /**< for a second decoder or renderer have refused every frame */
    MARVO_FAULT_HELD_UP = 4, /**< decoder or renderer have not returned from a frame for a second */
    MARVO_FAULT_NO_GRAPH = 8 /**< the play graph cannot go on; marvo_show() makes it anew */
};

/** The whole state of the engine. Filled consistently: all of it belongs to one moment between two commands,
 * unless `busy`. */
typedef struct marvo_status_info {
    marvo_u32 size;              /**< bytes of this structure, set by the caller */
    marvo_i32 built;             /**< ::marvo_built */
    marvo_i32 busy;              /**< a command is being carried out at this moment */
    marvo_i32 camera;            /**< ::marvo_camera */
    marvo_u32 camera_since_ms;   /**< for how long it has been so */
    marvo_u32 camera_lost;       /**< how often the device was lost since marvo_init() */
    marvo_i32 system;            /**< ::marvo_system of the captured frames */
    marvo_u32 frame_bytes;       /**< bytes of one captured frame; 0 before marvo_init() */
    marvo_u32 frames_per_second; /**< 25 or 30 */
    marvo_u32 ring_frames;       /**< frames that the ring has room for; 0 without a ring */
    marvo_u64 next_frame;        /**< the number that the next captured frame gets: one past the newest */
    marvo_u64 oldest_frame;      /**< the oldest frame in the ring; as next_frame when it is empty */
    marvo_u64 arrived;           /**< frames that came from camera or feed since the loading, modulo 2^32 */
    marvo_i32 recording;         /**< a recording is on */
    marvo_i32 failing;           /**< its newest write failed */
    marvo_i32 behind;            /**< its writer is so far behind that frames are lost */
    marvo_i32 complete;          /**< it has ended, and its file is whole */
    marvo_u64 taken;             /**< frames captured while it was on */
    marvo_u64 written;           /**< of them, those in the file: safe */
    marvo_u64 waiting;           /**< those that the writer has still to come to */
    marvo_u64 lost;              /**< those that the ring went over, or that were given up */
    marvo_u64 failed;            /**< those that could not be written */
    marvo_u64 beyond_limit;      /**< those that the setting "dv.maxfilesize" keeps out */
    marvo_u64 drive_frames;    /**< frames that the drive has room for; MARVO_UNKNOWN when it does not tell */
    marvo_u32 first_error;     /**< the system's number of what failed first; 0: nothing */
    marvo_u32 picture_faults;  /**< ::marvo_fault bits */
    marvo_i32 replaying;       /**< a replay is on; otherwise play is live */
    marvo_i32 paused;          /**< the shown frame is held */
    double speed;              /**< frames per tick */
    marvo_u64 shown_frame;     /**< the frame being shown; MARVO_NO_FRAME before the first */
    marvo_u64 replay_from;     /**< first frame of the replay; MARVO_NO_FRAME without one */
    marvo_u64 replay_to;       /**< last frame of the replay, included */
    marvo_u64 unreadable_from; /**< the first frame of the replay that cannot be read; MARVO_NO_FRAME: none */
    marvo_u64 unreadable_frames; /**< how many */
    marvo_u32 unreadable_error;  /**< the system's number for why */
    marvo_i32 time_ms;        /**< the shown frame's time, at 40 or 33 ms a frame, less the markers' clock */
    marvo_i32 raw_time_ms;    /**< the shown frame's time, exactly */
    marvo_u32 events_waiting; /**< events in the queue of marvo_event_next() */
    marvo_u64 events_lost;    /**< events that nobody took from it in time, in all */
    char first_error_text[192]; /**< `first_error` in words; empty for nothing */
} marvo_status_info;

/** The state of the engine. Waits for no command and no disk. */
int MARVO_CALL marvo_status(marvo_status_info* status);

/** Where play is. */
typedef struct marvo_play_info {
    marvo_u32 size;       /**< bytes of this structure, set by the caller */
    marvo_i32 replaying;  /**< a replay is on */
    marvo_i32 recording;  /**< a recording is on */
    marvo_i32 paused;     /**< the shown frame is held */
    marvo_u64 frame;      /**< the frame being shown; MARVO_NO_FRAME before the first */
    marvo_u64 from;       /**< first frame of the replay; MARVO_NO_FRAME without one */
    marvo_u64 to;         /**< last frame of the replay, included */
    marvo_u64 next_frame; /**< one past the newest captured frame; 0 without capture */
    double speed;         /**< frames per tick */
} marvo_play_info;

/** Where play is, in one consistent look; cheaper than marvo_status(). */
int MARVO_CALL marvo_play(marvo_play_info* play);

/** The full path of the recording whose numbers the frames have: the one started last since marvo_init().
 * Empty when there was none. */
int MARVO_CALL marvo_record_file(char* buffer, marvo_u32 capacity, marvo_u32* needed);

/** @}
 * @name Events, log and progress
 * @{ */

/** What has happened. What `frame`, `count` and `code` mean is said at each; otherwise they are 0. */
enum marvo_event_kind {
    MARVO_EVENT_CAMERA_LOST = 1,     /**< the device is gone or has failed; frame: the newest */
    MARVO_EVENT_CAMERA_SILENT = 2,   /**< no frame for a second; frame: the newest */
    MARVO_EVENT_CAMERA_BACK = 3,     /**< frames come again; frame: the first, count: the gap in ms */
    MARVO_EVENT_CAMERA_CHANGED = 4,  /**< back with another format; count: bytes of its frames. The recording
                                        is completed; call marvo_init() */
    MARVO_EVENT_RECORD_STARTED = 10, /**< a recording has begun */
    MARVO_EVENT_RECORD_ENDED = 11,   /**< it has ended; count: frames in the file */
    MARVO_EVENT_WRITE_FAILED =
        12, /**< frames cannot be written; frame: the first, count: so far, code: the system's */
    MARVO_EVENT_WRITE_RECOVERED = 13, /**< frames are in the file again; count: what it has cost */
    MARVO_EVENT_RING_OVERRUN = 14, /**< the writer is a whole ring behind, frames are lost; as WRITE_FAILED */
    MARVO_EVENT_CAUGHT_UP = 15,    /**< it is not any more; count: what it has cost */
    MARVO_EVENT_INCOMPLETE = 16,   /**< the file could not be completed at its end; code: the system's */
    MARVO_EVENT_REPLAY_STARTED = 20, /**< a replay has begun; frame: first, count: frames of the range */
    MARVO_EVENT_REPLAY_ENDED = 21,   /**< play is live again, or nothing is built */
    MARVO_EVENT_UNREADABLE =
        22, /**< frames of the replay cannot be read; frame: the first, count, code: the system's */
    MARVO_EVENT_READABLE = 23,      /**< all can be read again */
    MARVO_EVENT_PICTURE_FAULT = 30, /**< the picture is disturbed; code: the ::marvo_fault */
    MARVO_EVENT_PICTURE_WELL = 31,  /**< that one is over */
    MARVO_EVENT_GRAPH = 32          /**< an event of the play graph; code: its EC_ number */
};

/** One event. */
typedef struct marvo_event {
    marvo_u32 size;       /**< bytes of this structure, set by the caller; in a callback by the library */
    marvo_i32 kind;       /**< ::marvo_event_kind */
    marvo_u64 serial;     /**< counts all events from 1: a number left out was lost */
    marvo_u64 time_100ns; /**< when, as a FILETIME: UTC, in 100 ns since 1601 */
    marvo_u64 frame;      /**< see ::marvo_event_kind */
    marvo_u64 count;      /**< see there */
    marvo_u32 code;       /**< see there */
    marvo_u32 lost;       /**< events lost in front of this one */
    char text[192];       /**< the same in words */
} marvo_event;

/** Called with each event, on the library's callback thread; see above. `event` is valid during the call. */
typedef void(MARVO_CALL* marvo_event_fn)(void* user, const marvo_event* event);

/** Called with each line of the log as the file has it, without its line end, on the library's callback
 * thread. `line` is valid during the call. */
typedef void(MARVO_CALL* marvo_log_fn)(void* user, const char* line);

/** Called once per tick of play with where it is, on the library's callback thread; a call that is late tells
 * the newest and stands for those that were left out. `play` is valid during the call. */
typedef void(MARVO_CALL* marvo_play_fn)(void* user, const marvo_play_info* play);

/** Sets what is called with each event from now on; null: nothing. */
int MARVO_CALL marvo_set_event_callback(marvo_event_fn callback, void* user);

/** Takes the next event from the queue, which holds the last 512, whether a callback is set or not. Waits up
 * to `timeout_ms` for one (0: not at all). MARVO_E_EMPTY when there is none. */
int MARVO_CALL marvo_event_next(marvo_event* event, marvo_u32 timeout_ms);

/** Sets what is called with each line of the log from now on; null: nothing. Lines that a slow callback does
 * not take are left out, which a line says. */
int MARVO_CALL marvo_set_log_callback(marvo_log_fn callback, void* user);

/** Sets what is called once per tick of play; null: nothing. */
int MARVO_CALL marvo_set_play_callback(marvo_play_fn callback, void* user);

/** Posts the window message `message` to `window` (a HWND of any thread's) once per tick of play, with the
 * low 32 bits of the frame's number as its first parameter; the second has no meaning. Ask marvo_play() for
 * the rest. A null window ends it. */
int MARVO_CALL marvo_set_play_message(void* window, marvo_u32 message);

/** @}
 * @name Frames
 * @{ */

/** Where a frame came from. */
enum marvo_source {
    MARVO_SOURCE_MEMORY = 0, /**< from the caller */
    MARVO_SOURCE_RING = 1,   /**< from the ring of the newest frames */
    MARVO_SOURCE_FILE = 2    /**< from a file */
};

/** What a frame is, and what the camera noted in it. */
typedef struct marvo_frame_info {
    marvo_u32 size;              /**< bytes of this structure, set by the caller */
    marvo_u32 bytes;             /**< bytes of the frame */
    marvo_u64 number;            /**< its number; MARVO_NO_FRAME for a frame of the caller's */
    marvo_i32 source;            /**< ::marvo_source */
    marvo_i32 system;            /**< ::marvo_system */
    marvo_i32 time_code_known;   /**< whether it has a time code; the next five are 0 otherwise */
    marvo_u32 time_code_hours;   /**< 0 to 23 */
    marvo_u32 time_code_minutes; /**< 0 to 59 */
    marvo_u32 time_code_seconds; /**< 0 to 59 */
    marvo_u32 time_code_frames;  /**< 0 to 24 or 29 */
    marvo_i32 drop_frame;        /**< numbers 0 and 1 are left out in every minute but each tenth */
    marvo_i32 date_known;    /**< whether the date of recording is known; the next three are 0 otherwise */
    marvo_u32 year;          /**< four digits */
    marvo_u32 month;         /**< 1 to 12 */
    marvo_u32 day;           /**< 1 to 31 */
    marvo_i32 time_known;    /**< whether the time of recording is known; the next three are 0 otherwise */
    marvo_u32 hour;          /**< 0 to 23 */
    marvo_u32 minute;        /**< 0 to 59 */
    marvo_u32 second;        /**< 0 to 59 */
    marvo_i32 aspect_known;  /**< whether the frame says how it is to be shown; otherwise 4:3 is a guess */
    marvo_u32 aspect_width;  /**< 4 or 16 */
    marvo_u32 aspect_height; /**< 3 or 9 */
    marvo_i32 fields_known;  /**< whether it says the order of its fields */
    marvo_i32 interlaced;    /**< its fields were taken at different times */
    marvo_i32 upper_field_first; /**< the field with the topmost line is the earlier one */
} marvo_frame_info;

/** Copies frame `number` of the running recording into `buffer`, which has room for `capacity` bytes: from
 * the ring when that still holds it, else from the recording's file. Without a recording since marvo_init(),
 * the numbers are those of the ring alone. `info` may be null. With a null `buffer` and a `capacity` of 0
 * nothing is copied, and `info` is filled. MARVO_E_RANGE when there is no such frame (yet, or any more),
 * MARVO_E_BUFFER when it does not fit; `info` then tells its bytes. */
int MARVO_CALL marvo_frame_read(marvo_u64 number, void* buffer, marvo_u32 capacity, marvo_frame_info* info);

/** Says what the `bytes` bytes at `frame` are; the first 480 suffice for most. MARVO_E_FORMAT when no DV
 * frame begins there. */
int MARVO_CALL marvo_frame_describe(const void* frame, marvo_u32 bytes, marvo_frame_info* info);

/** The sound of a frame. */
typedef struct marvo_sound_info {
    marvo_u32 size;      /**< bytes of this structure, set by the caller */
    marvo_u32 rate;      /**< samples per second of each channel; 0: no sound */
    marvo_u32 channels;  /**< 1, 2, 4 or 8 */
    marvo_u32 bits;      /**< bits of a sample in the frame, 16 or 12 */
    marvo_u32 samples;   /**< samples of each channel in this frame */
    marvo_u32 concealed; /**< samples that were lost and have been replaced */
    marvo_i32 locked;    /**< the camera locked the sound to the picture */
} marvo_sound_info;

/** Gives the sound of a whole frame: 16-bit samples, one of each channel, then the next of each. `samples`
 * has room for `capacity` samples of all channels together (1944 a channel are enough). With null and 0 only
 * `info` is filled. A frame without sound is no failure. */
int MARVO_CALL marvo_frame_sound(const void* frame, marvo_u32 bytes, short* samples, marvo_u32 capacity,
                                 marvo_sound_info* info);

/** Makes pictures of DV frames by the system's DV decoder. */
typedef struct marvo_decoder marvo_decoder;

/** A picture. */
typedef struct marvo_picture_info {
    marvo_u32 size;          /**< bytes of this structure, set by the caller */
    marvo_u32 width;         /**< pixels of a line */
    marvo_u32 height;        /**< lines */
    marvo_u32 stride;        /**< bytes from line to line: width * 4 */
    marvo_u32 bytes;         /**< bytes of all pixels: what the buffer needs */
    marvo_u32 aspect_width;  /**< the sides of the picture as it is to be shown: 4 or 16 */
    marvo_u32 aspect_height; /**< 3 or 9 */
} marvo_picture_info;

/** Makes a decoder. The system's is looked for with the first frame. */
int MARVO_CALL marvo_decoder_open(marvo_decoder** decoder);

/** Makes a picture of a whole frame: 4 bytes for each pixel (blue, green, red, 255), the top line first.
 * `pixels` has room for `capacity` bytes (720 * 576 * 4 are enough); with null and 0 only `info` is filled,
 * and MARVO_E_BUFFER when it does not fit. MARVO_E_SYSTEM when there is no decoder or it gives no picture. */
int MARVO_CALL marvo_decoder_decode(marvo_decoder* decoder, const void* frame, marvo_u32 bytes, void* pixels,
                                    marvo_u32 capacity, marvo_picture_info* info);

/** Gives the decoder back. */
int MARVO_CALL marvo_decoder_close(marvo_decoder* decoder);

/** A source of frames that the host hands over, in place of a camera. */
typedef struct marvo_feed marvo_feed;

/** Opens the feed: the next marvo_init() captures its frames instead of a device's. There is one at most
 * (MARVO_E_STATE); `system` is one of
 * ::marvo_system. */
int MARVO_CALL marvo_feed_open(int system, marvo_feed** feed);

/** Hands a whole frame over as if a camera had sent it at this moment: it gets the next number, is shown,
 * recorded and can be replayed. From any thread, at the pace of the frames (live play follows what comes; a
 * second without a frame counts as a silent camera). MARVO_E_STATE while the engine does not run on this
 * feed, MARVO_E_FORMAT for what is no frame of the feed's system. */
int MARVO_CALL marvo_feed_add(marvo_feed* feed, const void* frame, marvo_u32 bytes);

/** Closes the feed: nothing can be added any more, and the next marvo_init() takes a device. */
int MARVO_CALL marvo_feed_close(marvo_feed* feed);

/** @}
 * @name Recordings without the engine
 * None of these needs marvo_init(), and none touches the engine.
 * @{ */

/** A recording that is read. */
typedef struct marvo_reader marvo_reader;

/** In which way a recording ended. */
enum marvo_end {
    MARVO_END_FINISHED = 0,      /**< whole */
    MARVO_END_BEING_WRITTEN = 1, /**< its writer has it open at this moment */
    MARVO_END_CUT_OFF = 2        /**< something is missing at its end; see marvo_repair() */
};

/** What a recording is. */
typedef struct marvo_recording_info {
    marvo_u32 size;                 /**< bytes of this structure, set by the caller */
    marvo_i32 kind;                 /**< ::marvo_kind */
    marvo_u64 frames;               /**< whole frames, as of the opening or the last refresh */
    marvo_u64 file_bytes;           /**< bytes of the file */
    marvo_i64 frame_duration_100ns; /**< time per frame in 100 ns */
    marvo_i64 duration_100ns;       /**< of all frames */
    double frames_per_second;       /**< 25 or 29.97 */
    marvo_u32 frame_bytes;          /**< bytes of one frame, as of the first; 0 while there is none */
    marvo_i32 system;               /**< ::marvo_system */
    marvo_i32 end;                  /**< ::marvo_end */
    marvo_u32 reserved;             /**< 0 */
    char end_text[192];             /**< `end` in words; empty when finished */
} marvo_recording_info;

/** Opens the recording `file`, whatever its kind: raw, AVI (also of other programs), or DV stream; it may
 * still be growing. */
int MARVO_CALL marvo_reader_open(const char* file, marvo_reader** reader);

/** Says what it is. */
int MARVO_CALL marvo_reader_info(marvo_reader* reader, marvo_recording_info* info);

/** Looks for frames that were written since. */
int MARVO_CALL marvo_reader_refresh(marvo_reader* reader);

/** Copies frame `number` into `buffer`; the rest as for marvo_frame_read(). */
int MARVO_CALL marvo_reader_read(marvo_reader* reader, marvo_u64 number, void* buffer, marvo_u32 capacity,
                                 marvo_frame_info* info);

/** Closes it. */
int MARVO_CALL marvo_reader_close(marvo_reader* reader);

/** A recording that is written. */
typedef struct marvo_writer marvo_writer;

/** Flags of functions that make files. */
enum marvo_flags {
    MARVO_REPLACE = 1, /**< a file of that name is replaced; otherwise it is left alone, and MARVO_E_EXISTS */
    MARVO_NO_SOUND = 2 /**< an AVI file gets no sound stream; the sound inside of the frames stays */
};

/** Creates the recording `file` for frames of `system`. `kind` is one of ::marvo_kind; by its name it is an
 * AVI file when that has ".avi", else a raw recording, as the engine makes them. `flags`: 0 or MARVO_REPLACE.
 * Others may read it while it grows. */
int MARVO_CALL marvo_writer_create(const char* file, int kind, int system, marvo_u32 flags,
                                   marvo_writer** writer);

/** Appends a whole frame. When it could not be written, the next one takes its place, and all before it stay.
 */
int MARVO_CALL marvo_writer_add(marvo_writer* writer, const void* frame, marvo_u32 bytes);

/** Completes the file and closes the handle, whatever comes of it; `frames` (may be null) is what the file
 * has. */
int MARVO_CALL marvo_writer_finish(marvo_writer* writer, marvo_u64* frames);

/** Told how much of how much is done. Not 0 ends the work with MARVO_E_CANCELLED. */
typedef int(MARVO_CALL* marvo_work_fn)(void* user, marvo_u64 done, marvo_u64 all);

/** Told of one thing that is wrong: where, in bytes from the start of the file, and what. Not 0 ends the work
 * with MARVO_E_CANCELLED. */
typedef int(MARVO_CALL* marvo_finding_fn)(void* user, marvo_u64 offset, const char* text);

/** What a verification found. */
typedef struct marvo_verify_result {
    marvo_u32 size;   /**< bytes of this structure, set by the caller */
    marvo_i32 kind;   /**< ::marvo_kind */
    marvo_u64 frames; /**< whole frames */
    marvo_u64 faults; /**< faults in all, of which the first 1000 are told; 0: a sound recording */
} marvo_verify_result;

/** Looks at the whole of the recording `file`, its structure and every frame, and changes nothing. `finding`
 * and `work` may be null; `user` is for both. Faults are no failure: the result has their number. `result`
 * may be null. */
int MARVO_CALL marvo_verify(const char* file, marvo_finding_fn finding, marvo_work_fn work, void* user,
                            marvo_verify_result* result);

/** How to copy. */
typedef struct marvo_copy_options {
    marvo_u32 size;     /**< bytes of this structure, set by the caller */
    marvo_u32 flags;    /**< ::marvo_flags */
    marvo_i32 kind;     /**< ::marvo_kind of the new file; by name ".dv" is a DV stream, ".avi" an AVI file */
    marvo_u32 reserved; /**< 0 */
    marvo_u64 first;    /**< first frame */
    marvo_u64 last;     /**< last frame, included; MARVO_TO_THE_END for all from `first` on */
} marvo_copy_options;

/** What came of it. */
typedef struct marvo_copy_result {
    marvo_u32 size;           /**< bytes of this structure, set by the caller */
    marvo_i32 kind;           /**< ::marvo_kind of the new file */
    marvo_u64 frames;         /**< frames in it */
    marvo_u64 bytes;          /**< bytes of it */
    marvo_u32 sound_rate;     /**< samples per second of its sound stream; 0 without one */
    marvo_u32 sound_channels; /**< channels of it */
    marvo_u64 lost;           /**< repair: frames that were in the old file and could not be saved */
    marvo_u64 damaged;        /**< repair: those of them that begin as frames do and are not whole */
    marvo_i32 exact;          /**< repair: `lost` is exact; otherwise at least so many */
    marvo_u32 holes;          /**< repair: places where frames are missing */
    char note[192];           /**< what somebody might miss in the new file, in words; mostly empty */
} marvo_copy_result;

/** Copies frames of the recording `from` (which may be growing) into the new file `to`, also as another kind.
 * The file appears under its name when it is whole; when anything fails, nothing is left behind. `options`
 * null: all frames, the kind by the name, no replacing. `work` and `result` may be null. */
int MARVO_CALL marvo_export(const char* from, const char* to, const marvo_copy_options* options,
                            marvo_work_fn work, void* user, marvo_copy_result* result);

/** Searches the damaged recording `from` for its frames and writes all that are whole into the new file `to`,
 * of the same kind when `to` may be one, else of the kind that its name means. `flags`: 0 or MARVO_REPLACE.
 * The rest as for marvo_export(). */
int MARVO_CALL marvo_repair(const char* from, const char* to, marvo_u32 flags, marvo_work_fn work, void* user,
                            marvo_copy_result* result);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
