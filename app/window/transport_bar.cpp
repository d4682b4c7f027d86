#include "app/window/transport_bar.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>

namespace app {

namespace {

/// What is drawn on a button.
enum class Sign {
    words,
    live,
    record,
    stop,
    hold,
    play,
    playBack,
    step,
    stepBack,
    skip,
    skipBack,
    home,
    end,
    again,
    markIn,
    markOut,
    mode,
    reverse
};

struct Row {
    Command command;
    Sign sign;
    const wchar_t* words; ///< on the sign or instead of one
    int width;            ///< at 96 dots per inch
    int need;             ///< buttons of a lower need give way first
    bool gap;             ///< a gap in front of it
};

const Row rows[] = {
    {Command::live, Sign::live, L"LIVE", 92, 9, false},
    {Command::again5, Sign::again, L"5", 58, 8, true},
    {Command::again10, Sign::again, L"10", 58, 9, false},
    {Command::again20, Sign::again, L"20", 58, 7, false},
    {Command::home, Sign::home, L"", 50, 4, true},
    {Command::stepBack10, Sign::skipBack, L"", 54, 5, false},
    {Command::stepBack, Sign::stepBack, L"", 54, 8, false},
    {Command::playBackward, Sign::playBack, L"", 54, 6, false},
    {Command::holdOrGoOn, Sign::hold, L"", 76, 9, false},
    {Command::playForward, Sign::play, L"", 54, 8, false},
    {Command::stepForward, Sign::step, L"", 54, 8, false},
    {Command::stepForward10, Sign::skip, L"", 54, 5, false},
    {Command::end, Sign::end, L"", 50, 4, false},
    {Command::speed3, Sign::words, L"\x00BC", 48, 6, true},
    {Command::speed5, Sign::words, L"\x00BD", 48, 7, false},
    {Command::speed7, Sign::words, L"1", 48, 7, false},
    {Command::speed8, Sign::words, L"2", 48, 3, false},
    {Command::nextPlayMode, Sign::mode, L"", 58, 5, false},
    {Command::markIn, Sign::markIn, L"", 58, 8, true},
    {Command::markOut, Sign::markOut, L"", 58, 8, false},
    {Command::clipOfLast10, Sign::words, L"+10s", 68, 7, false},
    {Command::record, Sign::record, L"REC", 92, 9, true},
    {Command::stop, Sign::stop, L"", 58, 9, false},
};

constexpr int gapWidth = 12;
constexpr int between = 3;

} // namespace

bool TransportBar::createBar(HWND parent, Fonts& fonts) {
    buttons_.resize(std::size(rows));
    if (!createPanel(parent, fonts)) {
        return false;
    }
    hint_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                            0, 0, 0, 0, handle(), nullptr, nullptr, nullptr);
    return true;
}

void TransportBar::setKeys(const KeyMap& keys, Language language) {
    for (size_t i = 0; i < buttons_.size(); ++i) {
        const std::vector<Key> own = keys.keys(rows[i].command);
        buttons_[i].key = own.empty() ? std::wstring() : own.front().text();
        buttons_[i].name = text(commandInfo(rows[i].command).text, language);
    }
    layOut();
}

void TransportBar::update(const View& view) {
    bool changed = false;
    for (size_t i = 0; i < buttons_.size(); ++i) {
        Button& button = buttons_[i];
        bool on = false;
        COLORREF lit = colour::replay;
        const bool running = !view.held;
        switch (rows[i].command) {
        case Command::live:
            on = view.mode == View::Mode::live;
            lit = colour::live;
            break;
        case Command::holdOrGoOn:
            on = view.held;
            break;
        case Command::record:
            on = view.recording == View::Recording::recording || view.recording == View::Recording::failing;
            lit = RGB(150, 30, 30);
            break;
        case Command::speed3:
        case Command::speed5:
        case Command::speed7:
        case Command::speed8: {
            const double speed =
                speeds[static_cast<int>(rows[i].command) - static_cast<int>(Command::speed1)];
            const bool plays = view.mode == View::Mode::replay || view.mode == View::Mode::playlist ||
                               view.mode == View::Mode::oldRecording;
            on = plays && view.speed == speed;
            break;
        }
        case Command::playBackward:
            on = running && view.speed < 0.0;
            break;
        case Command::markIn:
            on = view.line.markIn.has_value();
            lit = RGB(140, 104, 10);
            break;
        case Command::nextPlayMode:
            on = view.playMode != PlayMode::once;
            break;
        default:
            break;
        }
        changed = changed || on != button.on || lit != button.lit;
        button.on = on;
        button.lit = lit;
    }
    if (changed) {
        invalidate();
    }
}

void TransportBar::layOut() {
    const int room = client().width() - scaled(16);
    int need = 0;
    int wanted = 0;
    const auto measure = [&] {
        wanted = 0;
        for (const Row& row : rows) {
            if (row.need >= need) {
                wanted += scaled(row.width) + scaled(between) + (row.gap ? scaled(gapWidth) : 0);
            }
        }
    };
    for (measure(); wanted > room && need < 9; measure()) {
        ++need;
    }
    // What room is left makes the buttons wider, not the gaps.
    const double stretch = wanted > 0 ? std::clamp(static_cast<double>(room) / wanted, 0.5, 1.6) : 1.0;
    double x = scaled(8) + std::max(0.0, (room - wanted * stretch) / 2);
    const Area area = client();
    for (size_t i = 0; i < buttons_.size(); ++i) {
        const Row& row = rows[i];
        buttons_[i].area = {};
        if (row.need < need) {
            continue;
        }
        x += row.gap ? scaled(gapWidth) * stretch : 0.0;
        const double width = scaled(row.width) * stretch;
        buttons_[i].area = {static_cast<int>(x), scaled(5), static_cast<int>(x + width),
                            area.height() - scaled(5)};
        x += width + scaled(between) * stretch;
    }
    for (size_t i = 0; i < buttons_.size() && hint_ != nullptr; ++i) {
        TOOLINFOW tool = {};
        // The size of the oldest version, which every system's control knows.
        tool.cbSize = TTTOOLINFOW_V1_SIZE;
        tool.uFlags = TTF_SUBCLASS;
        tool.hwnd = handle();
        tool.uId = i;
        SendMessageW(hint_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
        tool.rect = buttons_[i].area.rect();
        std::wstring words =
            buttons_[i].key.empty() ? buttons_[i].name : buttons_[i].name + L" (" + buttons_[i].key + L")";
        tool.lpszText = words.data();
        SendMessageW(hint_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
    invalidate();
}

void TransportBar::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::panel);
    for (size_t i = 0; i < buttons_.size(); ++i) {
        const Button& button = buttons_[i];
        if (button.area.width() <= 0) {
            continue;
        }
        const int index = static_cast<int>(i);
        const COLORREF ground = index == pressed_   ? colour::pressed
                                : button.on         ? button.lit
                                : index == hovered_ ? colour::hovered
                                                    : colour::raised;
        canvas.fillRound(button.area, canvas.scaled(4), ground);
        Area rest = button.area;
        canvas.text(rest.takeBottom(canvas.scaled(20)), button.key, Writing::small,
                    button.on ? colour::text : colour::faint, Canvas::Align::middle);
        rest.top += canvas.scaled(4);
        paintSign(canvas, rest, i, colour::text);
    }
}

void TransportBar::paintSign(Canvas& canvas, const Area& area, size_t index, COLORREF ink) const {
    const Row& row = rows[index];
    const int x = (area.left + area.right) / 2;
    const int y = (area.top + area.bottom) / 2;
    const int u = canvas.scaled(2); // a unit; signs are 8 units high
    const auto right = [&](int left, int width) {
        canvas.polygon({{left, y - 4 * u}, {left + width, y}, {left, y + 4 * u}}, ink);
    };
    const auto leftward = [&](int right_, int width) {
        canvas.polygon({{right_, y - 4 * u}, {right_ - width, y}, {right_, y + 4 * u}}, ink);
    };
    const auto bar = [&](int left, int width) {
        canvas.fill({left, y - 4 * u, left + width, y + 4 * u + 1}, ink);
    };
    switch (row.sign) {
    case Sign::live:
    case Sign::words:
        canvas.text(area, row.words, Writing::large, ink, Canvas::Align::middle);
        break;
    case Sign::record: {
        Area rest = area;
        canvas.disc(area.left + canvas.scaled(18), y, 4 * u, buttons_[index].on ? ink : colour::recording);
        rest.left += canvas.scaled(26);
        canvas.text(rest, row.words, Writing::large, ink, Canvas::Align::middle);
        break;
    }
    case Sign::stop:
        canvas.fill({x - 4 * u, y - 4 * u, x + 4 * u, y + 4 * u}, ink);
        break;
    case Sign::hold:
        bar(x - 6 * u, 2 * u);
        bar(x - 3 * u, 2 * u);
        right(x + u, 6 * u);
        break;
    case Sign::play:
        right(x - 3 * u, 7 * u);
        break;
    case Sign::playBack:
        leftward(x + 3 * u, 7 * u);
        break;
    case Sign::step:
        bar(x - 4 * u, 2 * u);
        right(x - u, 6 * u);
        break;
    case Sign::stepBack:
        bar(x + 2 * u, 2 * u);
        leftward(x + u, 6 * u);
        break;
    case Sign::skip:
        right(x - 5 * u, 5 * u);
        right(x, 5 * u);
        break;
    case Sign::skipBack:
        leftward(x + 5 * u, 5 * u);
        leftward(x, 5 * u);
        break;
    case Sign::home:
        bar(x - 5 * u, 2 * u);
        leftward(x + 4 * u, 7 * u);
        break;
    case Sign::end:
        bar(x + 3 * u, 2 * u);
        right(x - 4 * u, 7 * u);
        break;
    case Sign::again: {
        Area rest = area;
        const int head = area.left + canvas.scaled(18);
        leftward(head, 5 * u);
        rest.left = head;
        canvas.text(rest, row.words, Writing::large, ink, Canvas::Align::middle);
        break;
    }
    case Sign::markIn:
        bar(x - 5 * u, 2 * u);
        canvas.fill({x - 5 * u, y - 4 * u, x + 3 * u, y - 2 * u}, ink);
        canvas.fill({x - 5 * u, y + 2 * u, x + 3 * u, y + 4 * u + 1}, ink);
        break;
    case Sign::markOut:
        bar(x + 3 * u, 2 * u);
        canvas.fill({x - 3 * u, y - 4 * u, x + 5 * u, y - 2 * u}, ink);
        canvas.fill({x - 3 * u, y + 2 * u, x + 5 * u, y + 4 * u + 1}, ink);
        break;
    default:
        // Round and round: two arrows that meet.
        canvas.fill({x - 5 * u, y - 4 * u, x + 3 * u, y - 2 * u}, ink);
        canvas.polygon({{x + 2 * u, y - 5 * u}, {x + 5 * u, y - 3 * u}, {x + 2 * u, y - u}}, ink);
        canvas.fill({x - 3 * u, y + 2 * u, x + 5 * u, y + 4 * u}, ink);
        canvas.polygon({{x - 2 * u, y + u}, {x - 5 * u, y + 3 * u}, {x - 2 * u, y + 5 * u}}, ink);
        break;
    }
}

LRESULT TransportBar::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_SIZE:
        layOut();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        SetFocus(GetAncestor(handle(), GA_ROOT));
        pressed_ = buttonAt(lParam);
        if (pressed_ >= 0) {
            SetCapture(handle());
        }
        invalidate();
        return 0;
    case WM_MOUSEMOVE:
        setHovered(buttonAt(lParam));
        return 0;
    case WM_MOUSELEAVE:
        setHovered(-1);
        return 0;
    case WM_LBUTTONUP: {
        const int pressed = pressed_;
        ReleaseCapture();
        if (pressed >= 0 && pressed == buttonAt(lParam) && onCommand) {
            onCommand(rows[pressed].command);
        }
        return 0;
    }
    case WM_CAPTURECHANGED:
        pressed_ = -1;
        invalidate();
        return 0;
    }
    return Panel::handleMessage(message, wParam, lParam);
}

int TransportBar::buttonAt(LPARAM lParam) const {
    const POINT at = pointOf(lParam);
    const auto found = std::find_if(buttons_.begin(), buttons_.end(),
                                    [&](const Button& button) { return button.area.holds(at.x, at.y); });
    return found != buttons_.end() ? static_cast<int>(found - buttons_.begin()) : -1;
}

void TransportBar::setHovered(int button) {
    if (button != hovered_) {
        if (hovered_ < 0) {
            watchMouseLeave();
        }
        hovered_ = button;
        invalidate();
    }
}

} // namespace app
