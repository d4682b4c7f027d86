/// @file
/// A host that has frames of its own instead of a camera: it feeds the frames of a DV stream (a file of bare
/// frames, as `ffmpeg -f dv` writes it) through the live filter into the system's DV decoder and renderer.
///
///     marvo-live-feed STREAM.dv
#include "marvo.h"

#include <cstdio>
#include <vector>

namespace {

const wchar_t* const decoderClass = L"{B1B77C00-C3E4-11CF-AF79-00AA00B67A42}";
const wchar_t* const rendererClass = L"{70E102B0-5556-11CE-97C0-00AA0055595A}";
constexpr unsigned long palFrame_bytes = 144000;
constexpr unsigned long ntscFrame_bytes = 120000;

/// A DV stream that is read round and round.
class Stream {
public:
    explicit Stream(const wchar_t* name) : file_(name, OPEN_EXISTING) {
        unsigned char first[4] = {};
        unsigned long done = 0;
        open_ = file_.open(nullptr) && file_.read(first, sizeof first, &done) && done == sizeof first &&
                file_.seek(0);
        // The highest bit behind the first block's id says which system it is: 625 lines, or 525.
        frame_.resize((first[3] & 0x80) != 0 ? palFrame_bytes : ntscFrame_bytes);
    }

    /// Whether there is a stream to feed.
    bool open() const { return open_; }
    unsigned long frameSize() const { return static_cast<unsigned long>(frame_.size()); }

    /// The next frame, after the last one the first; null when nothing can be read.
    const unsigned char* next() { return read() || (file_.seek(0) && read()) ? frame_.data() : nullptr; }

private:
    bool read() {
        unsigned long done = 0;
        return file_.read(frame_.data(), frameSize(), &done) && done == frameSize();
    }

    vcore::file file_;
    bool open_ = false;
    std::vector<unsigned char> frame_;
};

/// The graph from the live filter to a window.
class Screen {
public:
    ~Screen() {
        live_.done();
        graph_.stop();
        if (window_) {
            window_->put_Visible(OAFALSE);
            window_->put_Owner(0);
            window_.clear();
        }
        graph_.done(true);
    }

    bool show(HWND host, unsigned long frameSize) {
        vvideo::dvMediaType type;
        type.initDVType(frameSize, true);
        if (!graph_.init(true) || !live_.init(type) || !decoder_.createS(decoderClass) ||
            !renderer_.createS(rendererClass) || !graph_.add(&live_, L"feed") ||
            !graph_.add(decoder_.filter(), L"decoder") || !graph_.add(renderer_.filter(), L"renderer") ||
            !graph_.connect(&live_, L"Output", decoder_.filter(), L"XForm In", nullptr) ||
            !graph_.renderPin(decoder_.filter(), L"XForm Out", renderer_.filter()) ||
            !window_.ref(renderer_.filter())) {
            return false;
        }
        RECT area{};
        GetClientRect(host, &area);
        window_->put_Owner(reinterpret_cast<OAHWND>(host));
        window_->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS);
        window_->SetWindowPosition(0, 0, area.right, area.bottom);
        return graph_.run(0.0);
    }

    /// Frames may be handed over at any time; the filter sends the newest at its own pace.
    void add(const unsigned char* frame) { live_.addFrame(vvideo::dvFrame(live_.frameSize(), frame)); }

    unsigned long period_ms() const { return static_cast<unsigned long>(live_.period() / 10000); }

private:
    vwin::com_fg graph_;
    dvLiveFilter live_;
    vwin::com_filter decoder_;
    vwin::com_filter renderer_;
    dvVideoWindow window_;
};

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND makeWindow() {
    WNDCLASSW type{};
    type.lpfnWndProc = onMessage;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = L"marvo live feed";
    RegisterClassW(&type);
    return CreateWindowExW(0, type.lpszClassName, L"marvo live feed", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                           CW_USEDEFAULT, CW_USEDEFAULT, 740, 620, nullptr, nullptr, type.hInstance, nullptr);
}

/// Feeds until the window is closed. False when the stream can no longer be read.
bool feed(Screen& screen, Stream& stream) {
    for (;;) {
        const unsigned char* frame = stream.next();
        if (!frame) {
            return false;
        }
        screen.add(frame);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                return true;
            }
            DispatchMessageW(&message);
        }
        Sleep(screen.period_ms());
    }
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2) {
        std::fputs("usage: marvo-live-feed STREAM.dv\n", stderr);
        return 2;
    }
    Stream stream(arguments[1]);
    if (!stream.open()) {
        std::fprintf(stderr, "marvo-live-feed: %ls cannot be read\n", arguments[1]);
        return 1;
    }
    Screen screen;
    if (!screen.show(makeWindow(), stream.frameSize())) {
        std::fputs("marvo-live-feed: there is no picture; is there a DV decoder?\n", stderr);
        return 1;
    }
    return feed(screen, stream) ? 0 : 1;
}
