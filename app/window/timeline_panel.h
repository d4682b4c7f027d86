/// @file
/// The whole recording as a line.
#pragma once

#include "app/session.h"
#include "app/timeline.h"
#include "app/window/window.h"

#include <functional>
#include <optional>

namespace app {

/// Draws the timeline of the view and takes the mouse: dragging scrubs, the wheel jogs, with Shift it
/// shuttles, with Ctrl it enlarges; a double click goes on from there.
class TimelinePanel : public Panel {
public:
    /// As `createPanel`. The session must outlive the panel.
    bool createTimeline(HWND parent, Fonts& fonts, Session& session);
    /// Draws what the view says now.
    void update();
    /// The wheel was turned over the panel, at this place of it.
    void wheel(int steps, bool shift, bool control, int x);

    /// The mouse asks for this place: the picture follows.
    std::function<void(std::uint64_t place)> onScrub;
    /// A double click on a place.
    std::function<void(std::uint64_t place)> onGo;
    /// A click on a clip; the second one of a double click plays it.
    std::function<void(std::uint64_t clip, bool play)> onClip;
    /// The wheel: by so many frames; up or down the speeds.
    std::function<void(int frames)> onJog;
    std::function<void(int steps)> onShuttle; ///< see there
    /// The mouse is over a place, at this pixel of the panel; nothing: it has left.
    std::function<void(std::optional<std::uint64_t> place, int x)> onHover;

protected:
    void paint(Canvas& canvas, const Area& area) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    struct Lanes {
        Area clips;
        Area line;
        Area times;
    };
    Lanes lanes(const Area& area) const;
    Area stretch(const Area& lane, const FrameSpan& places) const;
    void paintLine(Canvas& canvas, const Area& lane);
    void paintClips(Canvas& canvas, const Area& lane);
    void paintTimes(Canvas& canvas, const Area& lane);
    void paintCursor(Canvas& canvas, const Area& area, const Lanes& lanes);
    const View::ClipRow* clipAt(POINT at) const;
    void press(POINT at, bool twice);
    void moveTo(POINT at);
    void hover(std::optional<POINT> at);
    int left() const { return scaled(12); }

    Session* session_ = nullptr;
    mutable Timeline timeline_;
    bool scrubbing_ = false;
    bool hovering_ = false;
};

} // namespace app
