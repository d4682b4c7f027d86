#include "app/window/message_bar.h"

namespace app {

void MessageBar::update(const View& view, Language language) {
    Shown now;
    now.question = view.question.value_or(std::wstring());
    now.alarm = view.alarms.empty() ? std::wstring() : view.alarms.front().text;
    now.message = view.message.text;
    now.refused = view.message.refused;
    yes_ = text(Text::windowYes, language);
    no_ = text(Text::windowNo, language);
    if (!(now == shown_)) {
        shown_ = now;
        invalidate();
    }
}

namespace {

/// A line, or, when it is too long for that, two small ones.
void paintWords(Canvas& canvas, const Area& area, const std::wstring& words, Writing writing, COLORREF ink) {
    if (canvas.widthOf(words, writing) <= area.width()) {
        canvas.text(area, words, writing, ink);
    } else {
        canvas.paragraph(area.inset(0, canvas.scaled(2)), words, Writing::small, ink);
    }
}

} // namespace

void MessageBar::paint(Canvas& canvas, const Area& area) {
    const int margin = canvas.scaled(12);
    yesArea_ = noArea_ = {};
    if (!shown_.question.empty()) {
        canvas.fill(area, colour::warning);
        Area rest = area.inset(margin, canvas.scaled(3));
        const auto button = [&](const std::wstring& words, Area& place) {
            place = rest.takeRight(canvas.widthOf(words, Writing::strong) + canvas.scaled(36));
            rest.takeRight(canvas.scaled(8));
            canvas.fillRound(place, canvas.scaled(4), colour::background);
            canvas.text(place, words, Writing::strong, colour::text, Canvas::Align::middle);
        };
        button(no_, noArea_);
        button(yes_, yesArea_);
        canvas.text(rest, shown_.question, Writing::large, colour::background);
        return;
    }
    canvas.fill(area, colour::background);
    Area rest = area;
    if (!shown_.alarm.empty()) {
        Area alarm = shown_.message.empty() ? rest : rest.takeLeft(rest.width() / 2);
        canvas.fill(alarm, colour::alarm);
        paintWords(canvas, alarm.inset(margin, 0), shown_.alarm, Writing::strong, colour::text);
    }
    Area message = rest.inset(margin, 0);
    if (shown_.refused && !shown_.message.empty()) {
        Area sign = message.takeLeft(canvas.scaled(14));
        canvas.fill({sign.left, sign.top + canvas.scaled(8), sign.left + canvas.scaled(5),
                     sign.bottom - canvas.scaled(8)},
                    colour::warning);
    }
    paintWords(canvas, message, shown_.message, Writing::normal,
               shown_.refused ? colour::warning : colour::text);
}

LRESULT MessageBar::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_LBUTTONDOWN && onAnswer && !shown_.question.empty()) {
        const POINT at = pointOf(lParam);
        if (yesArea_.holds(at.x, at.y)) {
            onAnswer(true);
        } else if (noArea_.holds(at.x, at.y)) {
            onAnswer(false);
        }
        return 0;
    }
    return Panel::handleMessage(message, wParam, lParam);
}

} // namespace app
