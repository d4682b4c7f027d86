#include "app/window/picture_panel.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

constexpr double zoomStep = 1.25;
constexpr double mostZoom = 8.0;

} // namespace

bool PicturePanel::createPicture(HWND parent, Fonts& fonts) {
    return createPanel(parent, fonts) && video_.createVideo(handle()) &&
           still_.createStill(handle(), fonts) && tag_.createBadge(handle(), fonts) &&
           corner_.createBadge(handle(), fonts) && alarm_.createBadge(handle(), fonts);
}

void PicturePanel::setAspect(int width, int height) {
    if (width > 0 && height > 0 && (width != aspectWidth_ || height != aspectHeight_)) {
        aspectWidth_ = width;
        aspectHeight_ = height;
        layOut();
    }
}

void PicturePanel::setEmpty(const std::wstring& words) {
    if (words != emptyWords_) {
        emptyWords_ = words;
        invalidate();
    }
    if (video_.visible() != words.empty()) {
        video_.show(words.empty());
        invalidate();
    }
}

void PicturePanel::setStill(const PixelView& picture, Field field) {
    const bool shown = picture.pixels != nullptr;
    if (shown) {
        still_.set(picture, field);
    }
    if (shown != stillShown_) {
        stillShown_ = shown;
        still_.show(shown);
    }
}

void PicturePanel::setTag(const std::wstring& words, COLORREF colour) {
    tag_.set(words, {}, colour, Writing::large);
    placeBadges(false);
}

void PicturePanel::setCorner(const std::wstring& words, COLORREF colour) {
    corner_.set(words, {}, colour, Writing::large);
    placeBadges(false);
}

void PicturePanel::setAlarm(const std::wstring& first, const std::wstring& second, COLORREF colour) {
    alarm_.set(first, second, colour, Writing::huge);
    placeBadges(false);
}

void PicturePanel::zoom(int steps, POINT around) {
    const Area before = enlarged();
    if (before.width() <= 0 || before.height() <= 0) {
        return;
    }
    const double x = static_cast<double>(around.x - before.left) / before.width();
    const double y = static_cast<double>(around.y - before.top) / before.height();
    zoom_ = std::clamp(zoom_ * std::pow(zoomStep, steps), 1.0, mostZoom);
    // What is under the mouse stays there.
    const Area whole = fitted();
    const Area panel = client();
    centreX_ = x - (around.x - panel.width() / 2.0) / (whole.width() * zoom_);
    centreY_ = y - (around.y - panel.height() / 2.0) / (whole.height() * zoom_);
    layOut();
}

void PicturePanel::resetZoom() {
    zoom_ = 1.0;
    layOut();
}

void PicturePanel::layOut() {
    keepInside();
    const Area area = enlarged();
    video_.place(area);
    SetWindowPos(still_.handle(), HWND_TOP, area.left, area.top, area.width(), area.height(), SWP_NOACTIVATE);
    placeBadges(true);
    if (videoSize_.cx != area.width() || videoSize_.cy != area.height()) {
        videoSize_ = {area.width(), area.height()};
        if (onVideoSize) {
            onVideoSize(area.width(), area.height());
        }
    }
    invalidate();
}

void PicturePanel::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, RGB(0, 0, 0));
    if (!emptyWords_.empty()) {
        const int width = std::min(area.width() - canvas.scaled(40), canvas.scaled(700));
        const int left = (area.width() - width) / 2;
        canvas.paragraph({left, area.height() / 3, left + width, area.bottom}, emptyWords_, Writing::large,
                         colour::faint);
    }
}

LRESULT PicturePanel::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_SIZE:
        layOut();
        return 0;
    case WM_LBUTTONDBLCLK:
        if (onDoubleClick) {
            onDoubleClick();
        }
        return 0;
    case WM_LBUTTONDOWN:
        SetFocus(GetAncestor(handle(), GA_ROOT));
        if (zoom_ > 1.0) {
            dragging_ = true;
            dragFrom_ = pointOf(lParam);
            SetCapture(handle());
        }
        return 0;
    case WM_MOUSEMOVE:
        if (dragging_) {
            const POINT now = pointOf(lParam);
            const Area whole = enlarged();
            centreX_ -= static_cast<double>(now.x - dragFrom_.x) / whole.width();
            centreY_ -= static_cast<double>(now.y - dragFrom_.y) / whole.height();
            dragFrom_ = now;
            layOut();
        }
        return 0;
    case WM_LBUTTONUP:
        if (dragging_) {
            ReleaseCapture();
        }
        return 0;
    case WM_CAPTURECHANGED:
        dragging_ = false;
        return 0;
    case WM_RBUTTONUP:
        if (onMenu) {
            POINT at = pointOf(lParam);
            ClientToScreen(handle(), &at);
            onMenu(at);
        }
        return 0;
    }
    return Panel::handleMessage(message, wParam, lParam);
}

/// Where the whole picture lies when it is not enlarged.
Area PicturePanel::fitted() const {
    const Area panel = client();
    const int width = std::min(panel.width(), MulDiv(panel.height(), aspectWidth_, aspectHeight_));
    const int height = MulDiv(width, aspectHeight_, aspectWidth_);
    const int left = (panel.width() - width) / 2;
    const int top = (panel.height() - height) / 2;
    return {left, top, left + width, top + height};
}

Area PicturePanel::enlarged() const {
    const Area whole = fitted();
    const Area panel = client();
    const int width = static_cast<int>(std::lround(whole.width() * zoom_));
    const int height = static_cast<int>(std::lround(whole.height() * zoom_));
    const int left = static_cast<int>(std::lround(panel.width() / 2.0 - centreX_ * width));
    const int top = static_cast<int>(std::lround(panel.height() / 2.0 - centreY_ * height));
    return {left, top, left + width, top + height};
}

/// No more black at the edges than without enlarging.
void PicturePanel::keepInside() {
    const Area whole = fitted();
    const Area panel = client();
    const auto keep = [this](double& centre, int picture, int room) {
        const double half = picture > 0 ? room / (2.0 * picture * zoom_) : 0.5;
        centre = half >= 0.5 ? 0.5 : std::clamp(centre, half, 1.0 - half);
    };
    keep(centreX_, whole.width(), panel.width());
    keep(centreY_, whole.height(), panel.height());
}

void PicturePanel::placeBadges(bool raise) {
    const Area panel = client();
    const auto put = [raise](Badge& badge, int x, int y, const SIZE& size) {
        RECT now = {};
        GetWindowRect(badge.handle(), &now);
        MapWindowPoints(nullptr, GetParent(badge.handle()), reinterpret_cast<POINT*>(&now), 2);
        const bool same = badge.visible() && now.left == x && now.top == y &&
                          now.right - now.left == size.cx && now.bottom - now.top == size.cy;
        if (!same || raise) {
            SetWindowPos(badge.handle(), HWND_TOP, x, y, size.cx, size.cy, SWP_NOACTIVATE | SWP_SHOWWINDOW);
        }
    };
    if (tag_.empty()) {
        tag_.show(false);
    } else {
        put(tag_, scaled(12), scaled(12), tag_.wanted());
    }
    if (corner_.empty()) {
        corner_.show(false);
    } else {
        const SIZE size = corner_.wanted();
        put(corner_, panel.width() - scaled(12) - size.cx, scaled(12), size);
    }
    if (alarm_.empty()) {
        alarm_.show(false);
    } else {
        SIZE size = alarm_.wanted();
        size.cx = std::min<LONG>(size.cx, panel.width());
        put(alarm_, (panel.width() - size.cx) / 2, (panel.height() - size.cy) / 2, size);
    }
}

} // namespace app
