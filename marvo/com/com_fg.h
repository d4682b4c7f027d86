/// @file
/// One DirectShow filter graph.
#pragma once

#include "marvo/com/com_filter.h"
#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

namespace vwin {

/// A DirectShow filter graph: made by init(), filled by add() and addSource(), connected, run, and taken
/// apart by done(). It counts as built while the graph builder is held.
///
/// Threads: driven from one thread at a time; no lock of its own. init() initialises COM on the calling
/// thread in the multithreaded mode and never uninitialises it; a thread already in another mode is used as
/// it is. No graph may be made while the library is being loaded: its creation would wait for the loader.
///
/// Ownership: the graph holds its filters; done() gives every reference back. Own pins are invisible to the
/// graph manager (their enumerator needs a `fetched` count, which the manager does not always give). So this
/// class disconnects the pins itself, and the order in which the manager starts the filters is arbitrary: a
/// source may deliver before its sink runs, and no filter may depend on the order.
///
/// Errors: false, 0 or an empty pointer; every operation on an unbuilt graph is harmless and answers so.
class MARVO_API com_fg {
public:
    /// An unbuilt graph. Nothing is created before init().
    com_fg() = default;
    com_fg(const com_fg&) = delete;
    com_fg& operator=(const com_fg&) = delete;
    /// Takes the graph apart as done(false). While the process is ending the graph is abandoned instead: its
    /// threads are dead, and taking it apart would wait for them.
    virtual ~com_fg();

    /// Makes an empty graph; positions are frame numbers where the graph accepts that. With `plain` false it
    /// also gets the stored clock (none stored: no clock, samples flow as fast as the filters pass them) and
    /// is registered in the running object table. A graph built before is taken apart first. False when the
    /// graph cannot be made.
    virtual bool init(bool plain);
    /// Stops the graph, disconnects every pin at both ends, removes every filter, revokes the registration
    /// and releases all interfaces and the stored clock. With `wait` true (after a failed or stopped build,
    /// when the graph may be in transition) it waits up to 2 s for the graph to report that it has stopped;
    /// with false the wait is at most 500 ms. True when the graph was unbuilt or came to rest in that time;
    /// it is taken apart in either case.
    virtual bool done(bool wait);
    /// Stores the reference clock to use (a reference is added; null: none) and, when built, gives it to the
    /// graph. False when a built graph refused it.
    virtual bool setSync(IReferenceClock* clock);
    /// Creates the filter of the class id in text form and adds it as `name`. On failure `filter` is empty.
    virtual bool add(const wchar_t* clsidText, com_filter& filter, const wchar_t* name);
    /// Creates the filter of the class and adds it as `name`. On failure `filter` is empty.
    virtual bool add(const GUID& clsid, com_filter& filter, const wchar_t* name);
    /// Adds an existing filter as `name`; the graph takes a reference of its own.
    virtual bool add(IBaseFilter* filter, const wchar_t* name);
    /// Connects the output pin `outName` of one filter to the input pin `inName` of another, as connect() of
    /// pins.
    virtual bool connect(IBaseFilter* from, const wchar_t* outName, IBaseFilter* to, const wchar_t* inName,
                         const AM_MEDIA_TYPE* type);
    /// Connects two pins: with `type` given directly and with this type only; with null directly with
    /// whatever the pins agree on, else through filters that the graph manager finds.
    virtual bool connect(IPin* out, IPin* in, const AM_MEDIA_TYPE* type);
    /// Completes the graph downstream of the filter's output pin `pinName`, as renderSource() does.
    virtual bool renderPin(IBaseFilter* filter, const wchar_t* pinName);
    /// Connects the filter's output pin `pinName` to the first free input pin of `sink` that takes it.
    virtual bool renderPin(IBaseFilter* filter, const wchar_t* pinName, IBaseFilter* sink);
    /// Disconnects the filter's pins at both ends and removes it. The graph must be stopped.
    virtual bool remove(IBaseFilter* filter);
    /// Disconnects two pins that are connected to each other. False when they are not. The graph must be
    /// stopped.
    virtual bool disconnect(IBaseFilter* from, const wchar_t* outName, IBaseFilter* to,
                            const wchar_t* inName);
    /// The first filter, in the order of adding, that has the interface `iid`. The result holds that
    /// interface (cast its pointer, or query it again), or nothing.
    virtual com_<IUnknown> findInterface(const GUID& iid);
    /// The filter called `name` in this graph, or nothing.
    virtual com_<IBaseFilter> findFilter(const wchar_t* name);
    /// Adds a source as `name` and holds it in `filter`. "input<n>" is capture device n, decimal or after
    /// "0x" hexadecimal; a negative or unreadable number is device 0, the default. "input" followed by one of
    /// ":=?-_'#" and a text is the capture device with that friendly name in any case (an equal name wins
    /// over one that contains the text). Anything else is a file name. False, with `filter` empty, when there
    /// is no such device or file, or the graph refuses it.
    virtual bool addSource(const wchar_t* source, com_filter& filter, const wchar_t* name);
    /// addSource(), then renderSource() of that filter.
    virtual bool renderSource(const wchar_t* source, com_filter& filter, const wchar_t* name);
    /// Completes the graph downstream of the filter's pin "Output", else "Stream 2", else its first free
    /// output pin that offers DV video. The way is made through the graph's own filters, next ones in the
    /// order of adding first, pin to pin; the graph manager's own completion is asked only when that connects
    /// nothing (it cannot pass a sink that has a free output pin, and it may leave a splitter out). True when
    /// anything was connected.
    virtual bool renderSource(com_filter& filter);
    /// Connects the pin that renderSource() would take to the first free input pin of `sink` that takes it.
    virtual bool renderCaptureSource(com_filter& filter, IBaseFilter* sink);
    /// Runs the graph with start time `seconds`; 0 or less starts at pos(), which is handed over as a bare
    /// count of 100 ns units (deliberate: it is not scaled as a positive time is). Falls back to the media
    /// control when the media filter is missing or fails. False also for a time that 64 bits do not hold.
    virtual bool run(double seconds);
    /// Stops every filter and waits at most 500 ms until all report it. True when stopped.
    virtual bool stop();
    /// Stops the graph and, where it can seek, goes back to position 0. True when stopped.
    virtual bool reset();
    /// Pauses the graph, through the media control when the media filter is missing or fails.
    virtual bool pause();
    /// Goes to a position of `seconds` x 10,000,000 in the graph's time format, leaving the stop position.
    /// False when the graph cannot seek or there is no such position.
    virtual bool seek(double seconds);
    /// The length: in units of 10,000,000 of the graph's time format, else in seconds; 0 when unknown.
    virtual double len();
    /// The current position, in the same units as len(); 0 when unknown.
    virtual double pos();
    /// Whether the graph is running now.
    virtual bool running();
    /// Whether the graph was run and has played to its end.
    virtual bool finished();
    /// Waits up to `timeout_ms` for the graph to play to its end. True when it has.
    virtual bool completed(int timeout_ms);
    /// Waits up to `timeout_ms` for the graph's next event and takes it. Its code (EC_...), or 0 when none
    /// came.
    virtual long getEvent(int timeout_ms);
    /// Takes the graph's next event, if there is one, without waiting: its code and its first parameter. An
    /// object that the event carries is released, so a parameter that is one is only a number. False when
    /// there is none. From any thread between the building and the taking apart.
    bool takeEvent(long& code, long long& parameter);

    /// Registers the graph in the running object table as "FilterGraph <address> pid <process>", so that
    /// tools can find it. A former registration is revoked first.
    bool registerFG();
    /// Revokes the registration. False when there was none.
    bool unregisterFG();
    /// Adds the capture device with this friendly name (as addSource() compares) under the name the device
    /// has.
    bool addFriendly(const wchar_t* friendlyName, com_filter& filter);
    /// The number of capture devices; 0 without any. Initialises COM on the calling thread as init() does.
    static int sourceCount();

    /// Whether the graph is built.
    bool built() const { return static_cast<bool>(builder_); }
    /// The graph builder without a reference added; null when unbuilt.
    IGraphBuilder* graph() const { return builder_.ptr(); }
    /// The graph's media control without a reference added, asked for at its first use; null when unbuilt.
    IMediaControl* mc();

private:
    bool complete(IPin* out);
    bool waitStopped(unsigned long timeout_ms);
    bool stopWithin(unsigned long timeout_ms);
    void takeApart();

    com_<IGraphBuilder> builder_;
    com_<IMediaFilter> mediaFilter_;
    com_<IMediaControl> mediaControl_;
    com_<IMediaSeeking> seeking_;
    com_<IMediaPosition> position_;
    com_<IMediaEventEx> events_;
    unsigned long rotCookie_ = 0;
    com_<IReferenceClock> clock_;
    bool runRequested_ = false;
};

} // namespace vwin
