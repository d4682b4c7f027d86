#include "app/window/timeline_panel.h"

#include <algorithm>

namespace app {

namespace {

constexpr double zoomStep = 1.3;
constexpr int timeEvery_px = 150;
constexpr int least_px = 2; // so wide is drawn whatever is there at all

} // namespace

bool TimelinePanel::createTimeline(HWND parent, Fonts& fonts, Session& session) {
    session_ = &session;
    return createPanel(parent, fonts);
}

void TimelinePanel::update() {
    const View::Line& line = session_->view().line;
    if (line.whole) {
        timeline_.setWhole(*line.whole);
    }
    timeline_.setWidth(std::max(1, client().width() - 2 * left()));
    if (line.position && timeline_.zoomed() && !scrubbing_) {
        timeline_.reveal(*line.position);
    }
    invalidate();
}

void TimelinePanel::wheel(int steps, bool shift, bool control, int x) {
    if (control) {
        timeline_.zoom(steps > 0 ? 1.0 / zoomStep : zoomStep, x - left());
        invalidate();
    } else if (shift && onShuttle) {
        onShuttle(steps);
    } else if (onJog) {
        onJog(steps);
    }
}

void TimelinePanel::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::panel);
    if (!session_->view().line.whole) {
        canvas.text(area.inset(left(), 0), text(Text::windowNothingYet, session_->settings().language),
                    Writing::normal, colour::off, Canvas::Align::middle);
        return;
    }
    const Lanes parts = lanes(area);
    paintClips(canvas, parts.clips);
    paintLine(canvas, parts.line);
    paintTimes(canvas, parts.times);
    paintCursor(canvas, area, parts);
}

LRESULT TimelinePanel::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetFocus(GetAncestor(handle(), GA_ROOT));
        press(pointOf(lParam), message == WM_LBUTTONDBLCLK);
        return 0;
    case WM_MOUSEMOVE:
        moveTo(pointOf(lParam));
        return 0;
    case WM_LBUTTONUP:
        if (scrubbing_) {
            ReleaseCapture();
        }
        return 0;
    case WM_CAPTURECHANGED:
        scrubbing_ = false;
        return 0;
    case WM_MOUSELEAVE:
        hover(std::nullopt);
        return 0;
    }
    return Panel::handleMessage(message, wParam, lParam);
}

TimelinePanel::Lanes TimelinePanel::lanes(const Area& area) const {
    Area rest = area.inset(left(), scaled(8));
    Lanes parts;
    parts.times = rest.takeBottom(scaled(22));
    parts.clips = rest.takeTop(scaled(18));
    rest.takeTop(scaled(3));
    parts.line = rest;
    return parts;
}

/// Where places lie in a lane, cut to it, and wide enough to be seen.
Area TimelinePanel::stretch(const Area& lane, const FrameSpan& places) const {
    const int from = std::clamp(lane.left + timeline_.x(places.first), lane.left, lane.right);
    const int to = std::clamp(lane.left + timeline_.x(places.last + 1), lane.left, lane.right);
    return {from, lane.top, std::min(lane.right, std::max(to, from + least_px)), lane.bottom};
}

void TimelinePanel::paintLine(Canvas& canvas, const Area& lane) {
    const View::Line& line = session_->view().line;
    canvas.fill(lane, colour::background);
    for (const View::Part& part : line.parts) {
        Area stretched = stretch(lane, part.places);
        canvas.fill(stretched, part.rolling ? colour::raised : colour::disk);
        canvas.fill(stretched.takeLeft(1), colour::line);
        if (stretched.width() > canvas.scaled(90)) {
            canvas.text(stretched.inset(canvas.scaled(6), 0), part.name, Writing::small, colour::faint);
        }
    }
    if (line.onDisk) {
        Area written = stretch(lane, *line.onDisk);
        canvas.fill(written.takeBottom(canvas.scaled(5)), colour::live);
    }
    if (line.ring) {
        Area ring = stretch(lane, *line.ring);
        canvas.fill(ring.takeTop(canvas.scaled(5)), colour::ring);
    }
    if (line.range) {
        canvas.frame(stretch(lane, *line.range), canvas.scaled(2), colour::replay);
    }
    for (const View::GapMark& gap : line.gaps) {
        const int x = lane.left + timeline_.x(gap.before);
        const int half = canvas.scaled(3);
        canvas.fill({std::max(lane.left, x - half), lane.top, std::min(lane.right, x + half), lane.bottom},
                    colour::gap);
    }
    if (line.liveEdge) {
        const int x = lane.left + timeline_.x(*line.liveEdge + 1);
        canvas.fill({x - canvas.scaled(3), lane.top, x, lane.bottom}, colour::live);
    }
}

void TimelinePanel::paintClips(Canvas& canvas, const Area& lane) {
    const View& view = session_->view();
    for (const View::ClipRow& row : view.clips) {
        if (!row.places || row.places->last < timeline_.shown().first ||
            row.places->first > timeline_.shown().last) {
            continue;
        }
        const Area bar = stretch(lane, *row.places);
        canvas.fill(bar, row.chosen ? colour::mark : colour::clip);
        if (bar.width() > canvas.scaled(36)) {
            canvas.text(bar.inset(canvas.scaled(4), 0), row.clip.name, Writing::small, colour::background);
        }
    }
    if (view.line.markIn) {
        const int x = lane.left + timeline_.x(*view.line.markIn);
        const int size = canvas.scaled(12);
        canvas.fill({x, lane.top, x + canvas.scaled(2), lane.bottom + canvas.scaled(60)}, colour::mark);
        canvas.polygon({{x, lane.top}, {x + size, lane.top + size / 2}, {x, lane.top + size}}, colour::mark);
    }
}

void TimelinePanel::paintTimes(Canvas& canvas, const Area& lane) {
    const int every = canvas.scaled(timeEvery_px);
    const auto timeAt_ms = [this](int x) { return session_->reel().timeOfDay_ms(timeline_.place(x)); };
    // Enlarged so far that times would repeat, or on a line of few seconds.
    const bool fraction = timeAt_ms(every) - timeAt_ms(0) < 2000;
    for (int x = 0; x + every / 2 < lane.width(); x += every) {
        const std::int64_t time_ms = timeAt_ms(x);
        canvas.fill({lane.left + x, lane.top, lane.left + x + 1, lane.top + canvas.scaled(6)}, colour::line);
        if (time_ms != 0) {
            canvas.text({lane.left + x + canvas.scaled(4), lane.top, lane.left + x + every, lane.bottom},
                        timeOfDayText(time_ms, fraction), Writing::small, colour::faint);
        }
    }
}

void TimelinePanel::paintCursor(Canvas& canvas, const Area& area, const Lanes& parts) {
    const View::Line& line = session_->view().line;
    if (!line.position) {
        return;
    }
    const int x = parts.line.left + timeline_.x(*line.position);
    if (x < parts.line.left || x > parts.line.right) {
        return;
    }
    const int half = canvas.scaled(1);
    const int head = canvas.scaled(7);
    canvas.fill({x - half, area.top + canvas.scaled(3), x + half + 1, parts.line.bottom}, colour::cursor);
    canvas.polygon({{x - head, area.top + canvas.scaled(2)},
                    {x + head, area.top + canvas.scaled(2)},
                    {x, area.top + canvas.scaled(2) + head}},
                   colour::cursor);
}

const View::ClipRow* TimelinePanel::clipAt(POINT at) const {
    const Area lane = lanes(client()).clips;
    if (!lane.holds(at.x, at.y)) {
        return nullptr;
    }
    const std::vector<View::ClipRow>& rows = session_->view().clips;
    const auto found = std::find_if(rows.rbegin(), rows.rend(), [&](const View::ClipRow& row) {
        return row.places && stretch(lane, *row.places).holds(at.x, at.y);
    });
    return found != rows.rend() ? &*found : nullptr;
}

void TimelinePanel::press(POINT at, bool twice) {
    if (!session_->view().line.whole) {
        return;
    }
    if (const View::ClipRow* row = clipAt(at)) {
        if (onClip) {
            onClip(row->clip.id, twice);
        }
        return;
    }
    const std::uint64_t place = timeline_.place(at.x - left());
    if (twice) {
        if (onGo) {
            onGo(place);
        }
        return;
    }
    scrubbing_ = true;
    SetCapture(handle());
    if (onScrub) {
        onScrub(place);
    }
}

void TimelinePanel::moveTo(POINT at) {
    hover(at);
    if (scrubbing_ && onScrub) {
        // Only the newest place counts when the mouse is faster than the picture.
        MSG next;
        if (!PeekMessageW(&next, handle(), WM_MOUSEMOVE, WM_MOUSEMOVE, PM_NOREMOVE)) {
            onScrub(timeline_.place(at.x - left()));
        }
    }
}

void TimelinePanel::hover(std::optional<POINT> at) {
    if (at && !hovering_) {
        hovering_ = true;
        watchMouseLeave();
    }
    hovering_ = at.has_value();
    if (!onHover) {
        return;
    }
    if (at && session_->view().line.whole) {
        onHover(timeline_.place(at->x - left()), at->x);
    } else {
        onHover(std::nullopt, 0);
    }
}

} // namespace app
