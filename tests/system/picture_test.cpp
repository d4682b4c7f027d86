#include "tests/support/foreign_pin.h"
#include "tests/support/vtable_hook.h"
#include "tests/system/picture.h"

#include <evcode.h>

#include <thread>

namespace {

class Picture : public PictureEngine {
protected:
    /// A thread that has a window, and pumps messages as long as it is told to.
    class WindowThread {
    public:
        explicit WindowThread(std::function<void(HWND)> first = {}) {
            thread_ = std::thread([=, this] {
                const HWND mine = makeWindow();
                if (first) {
                    first(mine);
                }
                window_ = mine;
                while (!stop_) {
                    MSG message;
                    while (pumps && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                        DispatchMessageW(&message);
                    }
                    Sleep(2);
                }
            });
            samples::eventually([&] { return window(); });
        }
        ~WindowThread() { end(); }
        HWND window() const { return window_; }
        /// Ends it, and with it, without a word to anybody, its windows.
        void end() {
            stop_ = true;
            if (thread_.joinable()) {
                thread_.join();
            }
        }
        std::atomic<bool> pumps = true;

    private:
        std::atomic<HWND> window_ = nullptr;
        std::atomic<bool> stop_ = false;
        std::thread thread_;
    };
};

TEST_F(Picture, StandsWhereTheHostWantsIt) {
    for (const char* stream : {"pal.dv", "ntsc.dv"}) {
        SCOPED_TRACE(stream);
        useCamera(stream, "");
        const HWND other = makeWindow();
        ASSERT_TRUE(dvFE.init(window, false));
        EXPECT_TRUE(moves(window));
        EXPECT_TRUE(dvFE.showWindow(other));
        EXPECT_TRUE(moves(other));
        EXPECT_TRUE(dvFE.hideWindow());
        EXPECT_TRUE(isBare(other, clientOf(other)));
        EXPECT_FALSE(dvFE.visible()) << "without a host it would stand on the desktop";
        const HWND none = reinterpret_cast<HWND>(0x7ffe);
        EXPECT_TRUE(dvFE.reinit(window));
        EXPECT_FALSE(dvFE.showWindow(none) || dvFE.reinit(none) || dvFE.init(none, false));
        EXPECT_TRUE(moves(window)) << "the picture stays where it was";
        DestroyWindow(other);
        EXPECT_FALSE(dvFE.showWindow(other)) << "a handle that was one";
        EXPECT_TRUE(dvFE.showWindow(nullptr));
        EXPECT_FALSE(dvFE.visible());
        EXPECT_TRUE(dvFE.showWindow(window));
        EXPECT_TRUE(dvFE.setSize(320, 240));
        EXPECT_TRUE(moves(window, {0, 0, 320, 240}));
        EXPECT_TRUE(isBare(window, {330, 0, 600, 500}));
        EXPECT_TRUE(dvFE.setPos(100, 80));
        EXPECT_TRUE(isBare(window, {0, 0, 98, 240}) && moves(window, {100, 80, 320, 240}));
        dvFE.done();
        EXPECT_TRUE(isBare(window, clientOf(window)));
        EXPECT_TRUE(dvFE.init(none, false)) << "capture does not need a window";
        EXPECT_FALSE(dvFE.visible());
        dvFE.done();
    }
}

TEST_F(Picture, OfTheDeinterlacingRendererStandsThereToo) {
    dvFE.setDeinterlace(true);
    for (const char* stream : {"pal.dv", "ntsc.dv"}) {
        useCamera(stream, "");
        const bool built = dvFE.init(window, false);
        EXPECT_EQ(built, log().find("error") == std::string::npos);
        EXPECT_NE(log().find("marvo created Mixing renderer 9"), std::string::npos);
        const HWND second = makeWindow();
        for (const HWND host : {window, second}) {
            if (!built) {
                break;
            }
            // Some systems do not draw it there: so its window, and that it takes the frames.
            EXPECT_TRUE(dvFE.showWindow(host));
            const HWND video = GetWindow(dvFE.handle(), GW_CHILD);
            const RECT area = clientOf(video), room = clientOf(host);
            EXPECT_TRUE(IsWindowVisible(video) && IsChild(host, video) && EqualRect(&area, &room));
            EXPECT_TRUE(captured(dvFE.lastFrame() + 10) && dvFE.playFaults() == 0);
            EXPECT_TRUE(pumpUntil([] { return dvFE.lastFrame() - dvFE.playedFrame() <= 5; }));
        }
        dvFE.done();
        DestroyWindow(second);
    }
    dvFE.setDeinterlace(false);
    EXPECT_TRUE(devicesFree());
}

TEST_F(Picture, ComesBackWhenTheHostsWindowIsGone) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    DestroyWindow(window);
    window = makeWindow();
    EXPECT_TRUE(captured(10));
    EXPECT_TRUE(dvFE.showWindow(window));
    EXPECT_TRUE(moves(window)) << "the host has destroyed its window";
    {
        WindowThread host;
        quick([&] { return dvFE.showWindow(host.window()); });
        EXPECT_TRUE(moves(host.window())) << "a window of another thread";
        host.end();
        pump(50);
        EXPECT_FALSE(dvFE.showWindow(host.window()));
        quick([&] { return dvFE.hideWindow() && dvFE.showWindow(window); });
        EXPECT_TRUE(moves(window)) << "that thread is gone";
    }
    dvFE.done();
    WindowThread host([](HWND mine) { EXPECT_TRUE(dvFE.init(mine, false) && dvFE.startRecord(nullptr)); });
    EXPECT_TRUE(moves(host.window()));
    host.end(); // the front end's own window and the renderer's were this thread's
    dvFE.setInfoDrain(window, drainMessage, &info);
    const unsigned long long recorded = dvFE.writtenFrame();
    quick([&] { return dvFE.showWindow(window); });
    EXPECT_TRUE(moves(window)) << "the thread of the commands is gone";
    EXPECT_TRUE(pumpUntil([&] { return dvFE.writtenFrame() > recorded + 5 && info.recording; }));
    dvFE.stopRecord();
    dvFE.done();
    EXPECT_GT(expectRecordingFollows("system_test.dv", "pal.dv", 144000, 6), recorded) << "without a gap";
}

TEST_F(Picture, GoesOnWhileTheHostPumpsNoMessages) {
    ASSERT_TRUE(dvFE.init(window, false));
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    EXPECT_TRUE(moves(window));
    const auto before = look(window, clientOf(window));
    EXPECT_TRUE(samples::eventually([&] { return dvFE.playedFrame() > 40 && dvFE.playedFrame() < 1000; }))
        << "no message is dispatched here";
    EXPECT_NE(before, look(window, clientOf(window)));
    WindowThread busy;
    EXPECT_TRUE(dvFE.showWindow(busy.window()));
    EXPECT_TRUE(moves(busy.window()));
    busy.pumps = false;
    dvFE.setInfoDrain(busy.window(), drainMessage, &info);
    // Moving windows there would take as long as the thread is busy.
    quick([&] { return !dvFE.setSize(300, 200) && !dvFE.setPos(5, 5) && !dvFE.showWindow(window); });
    quick([] { return dvFE.hideWindow() && dvFE.replay(5, 20, nullptr) && dvFE.live(); });
    busy.pumps = true;
    EXPECT_TRUE(pumpUntil([&] { return dvFE.showWindow(window); }));
    EXPECT_TRUE(moves(window));
    busy.pumps = false;
    quick([&] { return !dvFE.showWindow(busy.window()); });
    EXPECT_TRUE(moves(window));
    dvFE.setInfoDrain(window, drainMessage, &info);
}

/// What the engine tells of the picture, and the plain renderer with methods replaced.
struct Renderer : vcore::vObject {
    static inline std::atomic<bool> refuses, keeps;
    static inline HRESULT(STDMETHODCALLTYPE* receiveIt)(IMemInputPin*, IMediaSample*);

    static HRESULT STDMETHODCALLTYPE receive(IMemInputPin* pin, IMediaSample* sample) {
        while (keeps) {
            Sleep(5);
        }
        return refuses ? E_FAIL : receiveIt(pin, sample);
    }
    static HRESULT STDMETHODCALLTYPE run(IBaseFilter*, REFERENCE_TIME) { return E_FAIL; }
    static HRESULT STDMETHODCALLTYPE connectTo(IPin*, IPin*, const AM_MEDIA_TYPE*) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }

    vwin::com_<IBaseFilter> filter;
    vwin::com_<IPin> pin;
    vwin::com_<IMemInputPin> transport;
    std::vector<std::pair<unsigned long, unsigned long>> faults;
    std::set<std::pair<long, long long>> events;
    std::mutex mutex;

    Renderer() {
        refuses = keeps = false;
        filter.create(CLSID_VideoRenderer);
        pin = pinOf(*filter.ptr(), 0);
        transport.ref(pin.ptr());
        dvFE.connect(L"playFault", this, this, &Renderer::onFault);
        dvFE.connect(L"playEvent", this, this, &Renderer::onEvent);
    }
    ~Renderer() { dvFE.disconnect(this), keeps = false; }
    void onFault(unsigned long fault, unsigned long begun) {
        const std::lock_guard lock(mutex);
        faults.emplace_back(fault, begun);
    }
    void onEvent(long code, long long parameter) {
        const std::lock_guard lock(mutex);
        events.emplace(code, parameter);
    }
    bool hadEvent(long code, long long parameter) {
        const std::lock_guard lock(mutex);
        return events.contains({code, parameter});
    }
    bool told(unsigned long fault, unsigned long begun) {
        const std::lock_guard lock(mutex);
        return !faults.empty() && faults.back() == std::pair(fault, begun);
    }
};

TEST_F(Picture, ComesBackWhenTheRendererHasFailed) {
    Renderer renderer;
    {
        const VtableHook hook(renderer.pin.ptr(), 4, reinterpret_cast<void*>(&Renderer::connectTo));
        EXPECT_FALSE(dvFE.init(window, false));
        EXPECT_NE(log().find("no video - init - 16"), std::string::npos);
        EXPECT_TRUE(devicesFree());
    }
    {
        const VtableHook hook(renderer.filter.ptr(), 6, reinterpret_cast<void*>(&Renderer::run));
        EXPECT_TRUE(dvFE.init(window, false)) << "capture works";
        EXPECT_TRUE(renderer.told(play_no_graph, 1) && dvFE.playFaults() == play_no_graph);
    }
    ASSERT_TRUE(dvFE.startRecord(nullptr));
    EXPECT_TRUE(dvFE.showWindow(window));
    EXPECT_TRUE(moves(window) && dvFE.playFaults() == 0);
    const VtableHook hook(renderer.transport.ptr(), 6, reinterpret_cast<void*>(&Renderer::receive));
    Renderer::receiveIt = hook.original<decltype(Renderer::receiveIt)>();
    Renderer::refuses = true;
    EXPECT_TRUE(pumpUntil([&] { return renderer.told(play_refused, 1); }));
    Renderer::refuses = false;
    EXPECT_TRUE(pumpUntil([&] { return renderer.told(play_refused, 0); }));
    EXPECT_TRUE(moves(window)) << "by itself";
    Renderer::keeps = true;
    EXPECT_TRUE(pumpUntil([] { return dvFE.playFaults() == play_held_up; }));
    quick([] { return dvFE.replay(0, 9, nullptr) && dvFE.setSpeed(1) && dvFE.live(); });
    // A thread that is killed inside foreign filters would leave their references behind for the next tests.
    std::thread letGo([] { Sleep(500), Renderer::keeps = false; });
    quick([&] { return dvFE.showWindow(window); });
    letGo.join();
    EXPECT_TRUE(moves(window) && dvFE.playFaults() == 0);
    for (const long code : {EC_DISPLAY_CHANGED, EC_USERABORT, EC_ERRORABORT}) {
        FILTER_INFO graph{};
        dvFE.playFilter().QueryFilterInfo(&graph);
        vwin::com_<IMediaEventSink> sink;
        sink.ref(graph.pGraph);
        graph.pGraph->Release();
        EXPECT_EQ(sink->Notify(code, 7, 0), S_OK);
        EXPECT_TRUE(pumpUntil([&] { return renderer.hadEvent(code, 7); })) << code;
        EXPECT_EQ(dvFE.playFaults(), code == EC_DISPLAY_CHANGED ? 0u : play_no_graph + 0u);
        EXPECT_TRUE(dvFE.showWindow(window));
        EXPECT_TRUE(moves(window) && dvFE.playFaults() == 0) << code;
    }
    EXPECT_TRUE(pumpUntil([&] { return info.recording; })) << "it has gone on all the time";
    dvFE.stopRecord();
    dvFE.done();
    expectRecordingFollows("system_test.dv", "pal.dv", 144000, 30);
}

} // namespace
