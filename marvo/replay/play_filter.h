/// @file
/// The filter that plays: live, and replays.
#pragma once

#include "marvo/core/str.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/core/vobject.h"
#include "marvo/replay/frame_loader.h"
#include "marvo/replay/frame_store.h"
#include "marvo/replay/paced_source.h"
#include "marvo/replay/play_error.h"
#include "marvo/replay/play_info.h"
#include "marvo/video/frame.h"
#include "marvo/video/media_type.h"

/// The source of the play graph: each tick it works out which frame is due, fetches it from the frame store
/// or else from its frame loader, and sends it on. In a replay the frame store is asked only when the file
/// being played is the recording whose numbers the store's ring holds.
///
/// Live it follows the newest captured frame: up to 4 frames behind it advances one frame a tick, further
/// behind two, more than 25 behind it jumps; paused, it does neither. In a replay it plays a range of a
/// recording at a speed (fractions repeat frames, negative speeds go backward, 0 holds), looping within the
/// range. A frame that is not there yet holds position and picture instead of being skipped.
///
/// Posts the host's message to the info drain once per tick: the first parameter holds the low 32 bits of the
/// frame number, the second the address of the record. Then emits "playTime" (no arguments) on the delivery
/// thread, without a lock; its receivers must not wait for the host's thread, which waits for the delivery
/// thread in `done`.
///
/// In the same way, and once per change, it emits "playError" (first frame number 8 bytes, number of frames 8
/// bytes, system error 4 bytes) when frames of a replay cannot be read, while the last picture stays; with a
/// number of 0 when they can be read again, or are not asked for any more. And "playFault" (fault 4 bytes,
/// begun 4 bytes) when a `play_fault` begins (1) or is over (0).
///
/// Threads: see `dvPacedSource`; the commands come from the host's thread. The filter lock guards all
/// playback state, and one tick chooses and fetches its frame under it, so that a command comes either before
/// or after both. The loader's and the store's locks are taken inside it. A timed wait that runs out is not
/// an error.
class MARVO_API dvPlayFilter : public vcore::vObject, public dvPacedSource {
public:
    dvPlayFilter();

    /// As `done`.
    ~dvPlayFilter() override;

    dvPlayFilter(const dvPlayFilter&) = delete;
    dvPlayFilter& operator=(const dvPlayFilter&) = delete;

    /// Attaches to a frame store (which must outlive this filter's next `done`) and goes live. `type` is
    /// taken unless its major type is null; then the type from before stays. False when that is null as well.
    virtual bool init(dvFrameStore& store, vvideo::dvMediaType& type);

    /// Prepares a replay from the file `name` without a store; the arguments as for `play`. False when the
    /// file cannot be opened.
    virtual bool playinit(unsigned long long in, unsigned long long out, const wchar_t* name, double speed,
                          int delay, unsigned long maxFrames);

    /// Back to the newest frame at speed 1.0, not paused. Always true.
    bool live();

    /// Live at frame 0 at speed 1.0, not paused: for a numbering that begins anew. Always true.
    bool reset();

    /// Plays frames `in` to `out` (inclusive, in either order) of the recording `name`, or of the store's own
    /// when it is null, at `speed`, after `delay` ms (0 to `longestPlayDelay_ms`) in which the loader reads
    /// ahead with at most `maxFrames` frames.
    ///
    /// The range that is loaded already starts again at once, without delay; but not when frames of it could
    /// not be read: then the file is opened anew. False, and the replay before goes on, when there is neither
    /// name nor store, when the recording cannot be opened, and for a speed that is infinite or not a number.
    bool play(unsigned long long in, unsigned long long out, const wchar_t* name, double speed, int delay,
              unsigned long maxFrames);

    /// The longest delay between loading and starting a replay: the caller waits for it.
    static constexpr int longestPlayDelay_ms = 60000;

    /// Moves to a frame; in a replay it is wrapped into the range. Live, a frame that is not there (beyond
    /// the newest, or gone from the store) holds the picture until it comes, or until `live`.
    void seekFrame(long long frame);

    /// Holds or releases the shown frame. Always true.
    bool setPause(bool paused);

    /// Frames per tick, for play and for the loader's direction. False for infinities and NaN, which change
    /// nothing.
    bool setSpeed(double speed);

    /// What `play_info` reports as recording; the engine's front end sets it.
    void setRecording(bool recording);

    /// The loader's pause after each frame, in ms.
    void setBreaker(unsigned long ms);
    /// The pause set last.
    unsigned long breaker() const;

    /// Where progress is posted to: `info` is filled each tick and must live until the drain is changed. A
    /// null window ends it. Returns the window set before.
    HWND setInfoDrain(HWND window, unsigned int message, play_info* info);

    /// Where play is, in one look under the filter lock. The shown frame is all ones before the first.
    play_state state() const;

    /// Time per frame in 100 ns; 0 when not initialised.
    long long period() const;

    /// The play position in frames, which is the frame due next.
    long long frame() const;

    /// Whether the shown frame is held.
    bool paused() const;

    /// Whether a replay is on (not live).
    bool playing() const;

    /// Whether the engine's front end has set that it records.
    bool recording() const;

    /// What of the replay could not be read when it was tried last; no frames when live.
    play_error unreadable() const;

    /// Full path of the recording replayed last; empty before.
    vcore::str replayFile() const;

    /// Frames per tick, 1.0 when live.
    double speed() const;

    /// The number of the frame fetched last, all ones before the first.
    unsigned long long playedFrame() const;

    /// Stops delivering and loading, forgets the store, and that it records. Takes up to 1.5 s when a
    /// downstream filter is held up.
    virtual void done();

protected:
    IMediaSample* nextSample() override;
    void faultChanged(unsigned long fault, bool begun) override;

private:
    struct Tick {
        long long start = 0;
        long long stop = 0;
        long long frame = 0;
    };

    Tick dueTick() MARVO_REQUIRES(filterLock());
    void postInfo(long long frame, unsigned long long newest) MARVO_REQUIRES(filterLock());
    bool noteErrors() MARVO_REQUIRES(filterLock());
    void fetch(long long frame) MARVO_REQUIRES(filterLock());
    bool fetchInto(vvideo::dvFrame* frame, unsigned long long number) MARVO_REQUIRES(filterLock());
    unsigned long long newestFrame() const MARVO_REQUIRES(filterLock());
    long long positionOf(long long frame) const MARVO_REQUIRES(filterLock());
    long long rangeLength() const MARVO_REQUIRES(filterLock());
    long long wrapIntoRange(long long frame) const MARVO_REQUIRES(filterLock());
    void advance() MARVO_REQUIRES(filterLock());
    void prepare() MARVO_REQUIRES(filterLock());
    void goLive(long long position_100ns) MARVO_REQUIRES(filterLock());
    dvFrameStore* attachedStore() const;
    bool loadRange(unsigned long long in, unsigned long long out, const wchar_t* name, double speed,
                   int delay, unsigned long maxFrames);
    void startRange(double speed) MARVO_REQUIRES(filterLock());
    void startLoadedRange(const wchar_t* name, double speed) MARVO_REQUIRES(filterLock());

    HWND infoWindow_ MARVO_GUARDED_BY(filterLock()) = nullptr;
    unsigned int infoMessage_ MARVO_GUARDED_BY(filterLock()) = 0;
    play_info* info_ MARVO_GUARDED_BY(filterLock()) = nullptr;
    long long position_100ns_ MARVO_GUARDED_BY(filterLock()) = 0;
    dvFrameStore* store_ MARVO_GUARDED_BY(filterLock()) = nullptr;
    dvFrameLoad loader_;
    std::unique_ptr<vvideo::dvFrame> display_ MARVO_GUARDED_BY(filterLock());
    bool paused_ MARVO_GUARDED_BY(filterLock()) = false;
    bool replaying_ MARVO_GUARDED_BY(filterLock()) = false;
    bool live_ MARVO_GUARDED_BY(filterLock()) = true;
    unsigned long long inPoint_ MARVO_GUARDED_BY(filterLock()) = ~0ull;
    unsigned long long outPoint_ MARVO_GUARDED_BY(filterLock()) = ~0ull;
    /// Full path of the recording being replayed.
    vcore::str replayFile_ MARVO_GUARDED_BY(filterLock());
    double speed_ MARVO_GUARDED_BY(filterLock()) = 1.0;
    unsigned long long lastShown_ MARVO_GUARDED_BY(filterLock()) = ~0ull;
    /// The numbers belong to another recording from now on, so the frame that was shown last is another
    /// picture than the frame of that number.
    bool displayStale_ MARVO_GUARDED_BY(filterLock()) = false;
    bool recording_ MARVO_GUARDED_BY(filterLock()) = false;
    /// What "playError" has told last.
    play_error told_ MARVO_GUARDED_BY(filterLock());
    /// The host's thread only.
    vvideo::dvMediaType type_;
};
