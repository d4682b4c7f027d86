/// @file
/// The front end `dvFE`: what a host calls.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/frontend/build_step.h"
#include "marvo/frontend/camera_state.h"
#include "marvo/frontend/camera_watch.h"
#include "marvo/frontend/capture_graph.h"
#include "marvo/frontend/elements.h"
#include "marvo/frontend/library_hold.h"
#include "marvo/frontend/log.h"
#include "marvo/frontend/marker_clock.h"
#include "marvo/frontend/play_graph.h"
#include "marvo/frontend/settings.h"
#include "marvo/frontend/settings_files.h"
#include "marvo/gui/widget.h"
#include "marvo/replay/play_info.h"
#include "marvo/replay/record_status.h"

#include <utility>

/// The one object that a host drives: the exported global `dvFE`. It owns the capture graph (capture device,
/// DV splitter, record filter with the frame store), the play graph (play filter, DV decoder, renderer), the
/// window that the video is drawn into, the settings, and the log file "marvo.log" in the current directory.
///
/// States: not built; built and live; replaying; either of the two paused. Recording is independent of them.
/// `init` leads from not built to live, `live` from replaying to live, `replay` and `playElement` to
/// replaying, `done` and a failing `init` to not built, from where `init` may be called again.
///
/// Settings are read once, at construction, from "dv.ini" and "video.ini" in the current directory:
/// docs/settings.md has the keys. Nothing is written to these files.
///
/// While an engine is built, the library holds itself loaded: a `FreeLibrary` of the host's then takes effect
/// with `done`, which returns safely all the same. A process that ends without `done` still ends.
///
/// Threads: commands and setters belong to one host thread, the one that owns the host window. Status queries
/// may be called from any thread; each takes the lock of the object it reads, and a timed wait that runs out
/// is not an error: the value is read anyway. `onRecInfo`, `onRecError` and `onRecEnd` are called on the
/// frame store's writer thread, `onPlayTime`, `onPlayError` and `onPlayFault` on the play filter's delivery
/// thread. While an engine with a capture graph is built, the camera watch has a thread of its own.
///
/// What goes wrong with the picture is logged and emitted once per change: "playError" and "playFault" as the
/// play filter emits them, and "playEvent" (code 4 bytes, first parameter 8 bytes) for every event of the
/// play graph that the graph itself does not deal with. `showWindow` brings the picture back.
///
/// No exception leaves a command: one for which there is no memory is refused (false, or nothing is done),
/// with the line "refused: there is not enough memory" in the log. One that was building the engine takes it
/// apart.
///
/// Every command writes its name to the log, and what it causes in turn is logged with a greater depth.
class MARVO_API dvFrontEnd : public vwin::vWidget {
public:
    /// Reads the settings, opens the log and chooses the recording drive. Runs while the library is being
    /// loaded, so it makes no filter graph and waits for no thread; but the message box of `initRecord`, when
    /// no drive has room, holds up the loading until the user has answered.
    dvFrontEnd();

    /// As `hideWindow` and `done`. In a process that ends without `done` everything is left to the system.
    ~dvFrontEnd() override;

    dvFrontEnd(const dvFrontEnd&) = delete;
    dvFrontEnd& operator=(const dvFrontEnd&) = delete;

    /// @name Building and taking apart
    /// @{

    /// Builds and runs both graphs and shows the live picture in `window`. Waits up to 5 s for the first
    /// captured frames; none is no failure. A null window, or one that the picture cannot be put into, is
    /// none either: capture runs, and the picture is hidden until `showWindow`. When the capture graph is
    /// built already, as `showWindow`, unless the camera came back with another format. The flag is reserved.
    /// False when a step fails: everything is released, and `onError` is called once with "no video - init -
    /// <step>" (the numbers are those of `frontend::BuildStep`; 7 also for a ring of 0 frames), or, without a
    /// capture device, the log says so and `onError` is not called.
    bool init(HWND window, bool flag);

    /// Builds a play graph alone, which replays frames `from` to `to` of the recording `name` in `window`;
    /// what was built before is taken apart. False when a step fails, after `onError` with "no video -
    /// playinit".
    bool playinit(HWND window, int from, int to, const char* name);
    /// The same with 64-bit frame numbers and a wide name.
    bool playinitWide(HWND window, unsigned long long from, unsigned long long to, const wchar_t* name);

    /// As `showWindow`.
    bool reinit(HWND window);

    /// Chooses where to record when the recording file is "temp.dv": the fixed drive with the most free
    /// space, counting a "temp.dv" there, which will be overwritten; of equal ones the letter nearer Z. Then
    /// recording and replay use that file, true. Any other recording file is kept, true. When no drive has
    /// more than 1,080,000,000 bytes (five minutes), a message box says so and the result is false; it waits
    /// for the user.
    bool initRecord();

    /// Ends the filters' threads, the recording and the replay, frees the rings, releases both graphs and
    /// hides the video. Harmless when nothing is built. A camera that is just being opened again is waited
    /// for, up to three seconds: one that has not answered by then keeps its capture graph and the library
    /// until it does, and so long `init` fails. When the host has given up the library before, it is unloaded
    /// as soon as this call has returned; the object must then not be touched any more.
    void done();

    /// The filter that the next `init` captures from instead of a device, such as a `dvFeedFilter`; null: the
    /// device. Its pin "Output" offers DV video. A reference is held; `init` does not wait for its frames.
    void setSource(IBaseFilter* source);

    /// What is built.
    enum class Built {
        nothing,  ///< neither graph
        all,      ///< capture and play
        playAlone ///< the play graph of `playinit`
    };
    /// What is built now.
    Built built() const;
    /// The step at which the last `init`, `playinit` or `showWindow` failed that built the engine.
    frontend::BuildStep failedStep() const { return failedStep_; }

    /// Logs "error" and takes everything apart. Always false.
    bool onError(const wchar_t* text);

    /// Makes the renderer for the setting `deinterlace`; there is no fall-back from one to the other.
    bool _initVideoWindow();

    /// Asks a deinterlacing renderer to prefer bob. False when deinterlacing is off or the renderer does not
    /// offer it.
    bool _configureVideoWindow();

    /// @}
    /// @name The video's window
    /// @{

    /// Fits the video into `window` and shows it there. Null takes it out of the host's window, as
    /// `hideWindow`. Builds the graphs when none is built. A play graph that shows nothing any more (see
    /// `playFaults`; or its window went with a thread of the host's) is made anew and goes live, while
    /// capture and recording go on; but not one that `playinit` built. False when a step fails, and, with
    /// nothing changed, when the video cannot be put into the window; nor out of, or into, one of another
    /// thread that takes no messages for 300 ms.
    bool showWindow(HWND window);

    /// Takes the video out of the host's window and hides it; out of a window of another thread that
    /// takes no messages it cannot be taken, and stays. Always true.
    bool hideWindow();

    /// Sets the size of the video in pixels. False when there is no video window, and when the host's window
    /// belongs to another thread that takes no messages for 300 ms.
    bool setSize(int width, int height);
    /// Sets the position of the video in pixels. False as for `setSize`.
    bool setPos(int x, int y);

    /// Sets the host's window; null changes nothing.
    void setWindow(HWND window);

    /// The host destroyed the window: as `hideWindow`, then forgets it.
    void destroyEvent() override;

    /// Does nothing.
    void resizeEvent(int width, int height) override;
    /// Does nothing.
    void timerEvent(char timer) override;

    /// @}
    /// @name Replay commands
    /// @{

    /// Back to the newest frame: ends a replay, clears pause, speed 1.0.
    bool live();

    /// Holds the shown frame.
    bool pause();
    /// Releases it.
    bool resume();

    /// Plays frames `from` to `to` (inclusive, in either order) at speed 1.0, looping, from `file` or, when
    /// it is null or empty, from the play file. A new range starts after the play delay; the same range again
    /// starts at once. False without a play graph or when the file cannot be opened; play then goes on as
    /// before.
    bool replay(unsigned long long from, unsigned long long to, const wchar_t* file);

    /// Frames per tick: fractions slow down, negative values go backward, 0 holds.
    bool setSpeed(double factor);

    /// Shows `frame` next, in a replay wrapped into its range. Live, a frame that was not captured yet holds
    /// the picture until `live`, or until it is captured. Always true.
    bool seekPosition(unsigned long long frame);

    /// Records into `file` or, when null or empty, the recording file. Frame numbers begin again at 0, play
    /// goes live, and all elements are unset. False when the file cannot be created, for the reason that the
    /// log and `recordStatus` have; play has gone live all the same.
    bool startRecord(const wchar_t* file);

    /// The writer finishes, and the file is closed.
    void stopRecord();

    /// @}
    /// @name Elements and markers
    /// @{

    /// Takes a text marker from a timing or control source. "XInnFRAME" and "XOnnFRAME" set the in and out
    /// point of element nn (two digits, 00 to 127 as far as two digits reach), "XR" starts the clock and the
    /// first "Z+" after it stops it (see `getTime`); anything else is only logged, as is everything when
    /// "dv.control" is off (prefixed with
    /// "_"). Always true.
    bool call(const char* text);

    /// Replays an element from the play file. False unless 1 <= element < 128 (element 0 can be set but not
    /// played: deliberate) and both points are set.
    bool playElement(int element);
    /// Sets both points of an element, each as it is: negative for unset. False unless 0 <= element < 128.
    bool setElement(int element, long long in, long long out);
    /// Both points of an element, negative for unset, also for one that there is not.
    std::pair<long long, long long> element(int element) const;

    /// @}
    /// @name Settings
    /// @{

    /// What files and setters have chosen, but the limit of what is written, which the frame store has.
    const frontend::Settings& settings() const { return settings_; }
    /// Whether `call` interprets markers.
    void setControl(bool on);
    /// Whether suppressible log lines are written.
    void setLogging(bool on);
    /// 1: the next `init` switches deinterlacing off for every stream of the renderer.
    void setVideoFilter(int filter);

    /// The capture device's number, for the next `init`.
    void setInput(int input);
    /// The file to record into.
    void setRecFile(const wchar_t* name);
    /// The file to replay from.
    void setPlayFile(const wchar_t* name);
    /// Stored in the frame store; the engine does not use it.
    void setRemoteFile(const wchar_t* name);
    /// Frames the record filter's ring holds, for the next `init`, which fails with 0.
    void setMaxRecFrames(unsigned long frames);
    /// Frames a replay may hold in memory, for the next `replay`.
    void setMaxPlayFrames(unsigned long frames);
    /// Milliseconds between loading and starting a replay, for the next `replay`, which waits so long. Less
    /// than 0 is 0, more than `dvPlayFilter::longestPlayDelay_ms` is that.
    void setPlayDelay(int ms);
    /// Frames with this number and above are not written to the file (see `dvFrameStore::setMaxFilesize`).
    void setMaxFilesize(unsigned long frames);
    /// Whether the next `init` uses the mixing renderer and asks it to deinterlace.
    void setDeinterlace(bool on);
    /// Where progress is posted to each tick: the play filter fills `info`, which must live until the drain
    /// is changed, and posts `message` to `window`. A null window ends it. Returns the window set before.
    HWND setInfoDrain(HWND window, unsigned message, play_info* info);

    /// @}
    /// @name Camera
    /// Signals, emitted on the camera watch's thread while the engine is built; their receivers may call any
    /// query and every command but `done`, `init` and `playinit`, which wait for that thread:
    /// - "cameraLost" (newest frame, 8 bytes): the device is gone or has failed. Picture, ring and recording
    ///   are kept, replay goes on, and live shows the last picture.
    /// - "cameraStalled" (newest frame, 8 bytes): no frame has come for a second, but nothing says that the
    ///   device is gone.
    /// - "cameraBack" (first new frame, 8 bytes; gap in ms, 4 bytes): frames come again, under the numbers
    /// that
    ///   follow and into the same recording.
    /// - "cameraChanged" (bytes of its frames, 4 bytes): the device is back with another frame size or rate.
    ///   The recording is completed, replay goes on, and nothing is captured until the next `init`, which
    ///   then builds everything anew. A receiver posts that to the host's thread.
    /// @{

    /// How the camera is, for how long, and how often it was lost. From any thread.
    dvCameraState cameraState() const;
    /// Whether a camera that was gone is taken up again by itself. When not, a loss is told all the same, and
    /// `done` and `init` bring the camera back.
    void setReconnect(bool on);

    /// @}
    /// @name Status
    /// @{

    /// Copies the narrow recording file name with its terminator into `buffer`, whose size is not checked:
    /// have room for MAX_PATH characters.
    void getRecFilename(char* buffer);
    /// The record filter; it lives as long as the front end.
    dvRecFilter& recFilter();
    /// The play filter; it lives as long as the front end.
    dvPlayFilter& playFilter();
    /// Whether the shown frame is held.
    bool paused();
    /// Whether a replay is on.
    bool playing();
    /// Frames per tick.
    double speed();
    /// One past the newest captured frame; 0 before the first `init`, all ones (2^64 - 1) after `done`.
    unsigned long long lastFrame();
    /// The frame being shown, all ones before the first.
    unsigned long long playedFrame();
    /// The frame the writer takes next; 0 before the first `init`, all ones (2^64 - 1) after `done`.
    unsigned long long writtenFrame();
    /// How the recording goes that was started last, or how it went: what became of its frames, what failed,
    /// and the room on the drive. Any thread; never waits for the disk.
    record_status recordStatus();
    /// Bytes of one DV frame; 0 before `init`.
    unsigned long frameSize();
    /// 25 for frames of 144000 bytes, else 30, also before any frame is known.
    unsigned long framesPerSecond();
    /// Frames captured since the last call.
    unsigned long frameCount();
    /// Milliseconds of the played frame, at 40 or 33 whole milliseconds per frame, less the time between the
    /// last "XR" marker and the "Z+" after it. At 30 frames per second it drifts from `getRawTime`
    /// (deliberate).
    int getTime();
    /// Milliseconds of the played frame, exactly.
    int getRawTime();

    /// @}
    /// @name Log
    /// @{

    /// Writes a line to the log: local time, thread, depth, and `text` without line ends and tabs.
    /// Suppressible lines are left out when "dv.logging" is off. From any thread; lines of several threads
    /// stand one behind the other.
    void log(const char* text, bool suppressible);
    /// Has `drain` called with each line that the log gets, as `frontend::Log::setDrain`; null for none.
    void setLogDrain(frontend::Log::Drain drain) { log_.setDrain(drain); }
    /// Raises the depth shown in log lines.
    void logBegin();
    /// Lowers it again.
    void logEnd();

    /// @}

    /// Receives the frame store's "poolInfo" on its writer thread: slows the loader by up to 20 ms a frame
    /// while more than 25 frames wait to be written, and emits "recInfo" with the same arguments (8 + 8 + 4
    /// bytes).
    void onRecInfo(unsigned long long last, unsigned long long written, unsigned long poolSize);

    /// Receives the frame store's "recError" on its writer thread, when frames begin to be missing from the
    /// recording and when that is over: logs it, and emits "recError" with the same arguments (8 + 8 + 4 + 4
    /// bytes; see `dvFrameStore`). A system error of 0 means that all is well again.
    void onRecError(unsigned long long frame, unsigned long long frames, unsigned long systemError,
                    record_event event);

    /// Receives the frame store's "recEnd" when a recording has ended: logs its totals, and emits "recEnd".
    void onRecEnd();

    /// Receives the play filter's "playTime"; the host gets its progress through the info drain. Every eighth
    /// time looks for events of the play graph.
    void onPlayTime();

    /// @name The picture's troubles
    /// @{

    /// The frames of the replay that could not be read when they were tried last; none when live.
    play_error playError();
    /// What disturbs the picture at this moment: `play_fault` bits. Takes no lock.
    unsigned long playFaults();
    /// Receives the play filter's "playError": logs it with the file's name, and emits it with the same
    /// arguments.
    void onPlayError(unsigned long long first, unsigned long long frames, unsigned long error);
    /// Receives the play filter's "playFault": logs it, and emits it with the same arguments.
    void onPlayFault(unsigned long fault, unsigned long begun);

    /// @}

private:
    bool build(HWND window);
    bool buildPlayOnly(HWND window, unsigned long long from, unsigned long long to, const wchar_t* name);
    bool giveUp(frontend::BuildStep failed);
    bool refuse(const wchar_t* text);
    template <class Command>
    bool whole(Command command);
    bool settle(bool result);
    void takeApart();
    void runPlay(HWND window);
    bool present(HWND window);
    bool moveInto(HWND window);
    void takeOut();
    void placeVideo();
    bool videoGone();
    bool rebuildPlay();
    bool startPlay();

    frontend::LibraryHold hold_;
    bool initialised_ = false;
    frontend::BuildStep failedStep_ = frontend::BuildStep::none;
    frontend::SettingsFiles settingsFiles_;
    frontend::Settings settings_;
    frontend::Log log_;
    frontend::CaptureGraph capture_;
    frontend::PlayGraph play_;
    vwin::vWidget videoWidget_;
    vcore::semaphore recInfoLock_;
    frontend::Elements elements_;
    HWND hostWindow_ = nullptr;
    frontend::MarkerClock markerClock_;
    bool videoSeen_ = false;      // as a child of the widget
    unsigned long playTicks_ = 0; // on the delivery thread
    frontend::CameraWatch cameraWatch_;
};

/// The front end of this process, made when the library is loaded.
extern MARVO_API dvFrontEnd dvFE;
