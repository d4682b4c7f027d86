#include "app/window/clip_panel.h"

#include "app/window/still_view.h"

#include <algorithm>
#include <cstdlib>

namespace app {

namespace {

constexpr int headHeight = 34;
constexpr int rowHeight = 78;
constexpr int jobHeight = 40;
constexpr size_t mostJobRows = 3;
constexpr int dragFrom_px = 6;

} // namespace

bool ClipPanel::createClips(HWND parent, Fonts& fonts, Session& session, JobQueue& jobs,
                            PictureWorker& pictures) {
    session_ = &session;
    jobs_ = &jobs;
    pictures_ = &pictures;
    return createPanel(parent, fonts);
}

void ClipPanel::update() {
    jobRows_ = jobs_->jobs();
    std::erase_if(jobRows_, [](const JobQueue::Job& job) { return job.over(); });
    wishThumbnails();
    keepInside();
    revealChosen();
    std::wstring drawn;
    for (const View::ClipRow& row : rows()) {
        drawn += std::to_wstring(row.clip.id) + L' ' + row.clip.name + L' ' + row.length +
                 (row.chosen ? L'c' : L' ') + (row.playing ? L'p' : L' ') + (row.gone ? L'g' : L' ');
    }
    for (const JobQueue::Job& job : jobRows_) {
        drawn += job.name + std::to_wstring(static_cast<int>(job.progress * 200.0));
    }
    if (drawn != drawn_) {
        drawn_ = drawn;
        invalidate();
    }
}

void ClipPanel::takeThumbnail(const FrameAddress& address, dvPicture picture) {
    thumbnails_[{address.file, address.frame}] = std::move(picture);
    invalidate();
}

void ClipPanel::beginRename() {
    const auto row =
        std::find_if(rows().begin(), rows().end(), [](const View::ClipRow& r) { return r.chosen; });
    if (row == rows().end()) {
        return;
    }
    endRename(true);
    revealChosen();
    renamed_ = row->clip.id;
    Area area = rowArea(static_cast<size_t>(row - rows().begin()));
    area.takeLeft(scaled(96));
    area = {area.left, area.top + scaled(4), area.right - scaled(6), area.top + scaled(32)};
    edit_ = CreateWindowExW(
        0, L"EDIT", row->clip.name.c_str(), WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL, area.left,
        area.top, area.width(), area.height(), handle(), nullptr, GetModuleHandleW(nullptr), nullptr);
    if (edit_ == nullptr) {
        return;
    }
    SendMessageW(edit_, WM_SETFONT, reinterpret_cast<WPARAM>(fonts().get(Writing::normal)), TRUE);
    SendMessageW(edit_, EM_SETSEL, 0, -1);
    SetWindowLongPtrW(edit_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    const LONG_PTR former = SetWindowLongPtrW(edit_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&editProc));
    SetPropW(edit_, L"former", reinterpret_cast<HANDLE>(former));
    SetFocus(edit_);
}

void ClipPanel::wheel(int steps) {
    scroll_ -= steps * scaled(rowHeight) / 2;
    keepInside();
    invalidate();
}

void ClipPanel::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::panel);
    const Language language = session_->settings().language;
    const Area list = listArea();
    if (rows().empty()) {
        canvas.paragraph(list.inset(canvas.scaled(14), canvas.scaled(14)),
                         text(Text::windowNoClips, language), Writing::normal, colour::off);
    }
    for (size_t i = 0; i < rows().size(); ++i) {
        const Area row = rowArea(i);
        if (row.bottom > list.top && row.top < list.bottom) {
            paintRow(canvas, row, rows()[i]);
        }
    }
    if (dragging_ && dropBefore_ >= 0) {
        const int y = list.top + dropBefore_ * canvas.scaled(rowHeight) - scroll_;
        canvas.fill({list.left, y - canvas.scaled(2), list.right, y + canvas.scaled(2)}, colour::mark);
    }
    const Area head = headArea();
    canvas.fill(head, colour::panel);
    const std::wstring title = std::wstring(text(Text::windowClips, language)) + L"  " +
                               (rows().empty() ? std::wstring() : std::to_wstring(rows().size()));
    canvas.text(head.inset(canvas.scaled(12), 0), title, Writing::strong, colour::faint);
    paintJobs(canvas, jobsArea());
    canvas.fill({area.left, area.top, area.left + 1, area.bottom}, colour::background);
}

LRESULT ClipPanel::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT at = pointOf(lParam);
    switch (message) {
    case WM_LBUTTONDOWN:
        press(at);
        return 0;
    case WM_LBUTTONDBLCLK:
        press(at);
        ReleaseCapture();
        if (rowAt(at) >= 0 && onCommand) {
            onCommand(Command::playClip, {});
        }
        return 0;
    case WM_MOUSEMOVE:
        if (pressedRow_ >= 0 && std::abs(at.y - pressedAt_.y) > scaled(dragFrom_px)) {
            dragging_ = true;
        }
        if (dragging_) {
            const int height = scaled(rowHeight);
            dropBefore_ = std::clamp(static_cast<int>(at.y - listArea().top + scroll_ + height / 2) / height,
                                     0, static_cast<int>(rows().size()));
            invalidate();
        }
        return 0;
    case WM_LBUTTONUP:
        drop(at);
        return 0;
    case WM_CAPTURECHANGED:
        pressedRow_ = dropBefore_ = -1;
        dragging_ = false;
        invalidate();
        return 0;
    case WM_RBUTTONDOWN:
        press(at);
        ReleaseCapture();
        return 0;
    case WM_RBUTTONUP:
        if (rowAt(at) >= 0 && onMenu) {
            POINT place = at;
            ClientToScreen(handle(), &place);
            onMenu(place);
        }
        return 0;
    case WM_CTLCOLOREDIT:
        if (editGround_ == nullptr) {
            editGround_ = CreateSolidBrush(colour::background);
        }
        SetTextColor(reinterpret_cast<HDC>(wParam), colour::text);
        SetBkColor(reinterpret_cast<HDC>(wParam), colour::background);
        return reinterpret_cast<LRESULT>(editGround_);
    case WM_DESTROY:
        DeleteObject(editGround_);
        editGround_ = nullptr;
        return 0;
    }
    return Panel::handleMessage(message, wParam, lParam);
}

Area ClipPanel::headArea() const {
    Area area = client();
    return area.takeTop(scaled(headHeight));
}

Area ClipPanel::jobsArea() const {
    Area area = client();
    return area.takeBottom(static_cast<int>(std::min(jobRows_.size(), mostJobRows)) * scaled(jobHeight));
}

Area ClipPanel::listArea() const {
    Area area = client();
    area.takeTop(scaled(headHeight));
    area.takeBottom(jobsArea().height());
    return area;
}

Area ClipPanel::rowArea(size_t row) const {
    const Area list = listArea();
    const int top = list.top + static_cast<int>(row) * scaled(rowHeight) - scroll_;
    return {list.left, top, list.right, top + scaled(rowHeight)};
}

int ClipPanel::rowAt(POINT at) const {
    if (!listArea().holds(at.x, at.y)) {
        return -1;
    }
    const int row = (at.y - listArea().top + scroll_) / scaled(rowHeight);
    return row < static_cast<int>(rows().size()) ? row : -1;
}

void ClipPanel::paintRow(Canvas& canvas, const Area& area, const View::ClipRow& row) {
    Area rest = area;
    canvas.fill(rest, row.chosen ? colour::hovered : colour::panel);
    canvas.fill(rest.takeBottom(1), colour::background);
    if (row.playing) {
        canvas.fill(rest.takeLeft(canvas.scaled(5)), colour::replay);
    } else {
        rest.takeLeft(canvas.scaled(5));
    }
    Area thumbnail = rest.takeLeft(canvas.scaled(88)).inset(canvas.scaled(4), canvas.scaled(8));
    const auto found = thumbnails_.find({row.clip.file, row.clip.frames.first});
    canvas.fill(thumbnail, RGB(0, 0, 0));
    if (found != thumbnails_.end() && found->second.width != 0) {
        const dvPicture& picture = found->second;
        const int height = std::min(thumbnail.height(), MulDiv(thumbnail.width(), picture.aspectDenominator,
                                                               static_cast<int>(picture.aspectNumerator)));
        const int top = thumbnail.top + (thumbnail.height() - height) / 2;
        drawPicture(
            canvas.context(),
            {picture.pixels.data(), static_cast<int>(picture.width), static_cast<int>(picture.height)},
            Field::both, {thumbnail.left, top, thumbnail.right, top + height});
    }
    rest = rest.inset(canvas.scaled(5), canvas.scaled(8));
    canvas.text(rest.takeTop(canvas.scaled(26)), row.clip.name, Writing::strong,
                row.gone ? colour::off : colour::text);
    canvas.text(rest.takeTop(canvas.scaled(20)), row.timeOfDay, Writing::small, colour::faint);
    canvas.text(rest, row.gone ? text(Text::windowFileGone, session_->settings().language) : row.length,
                Writing::small, row.gone ? colour::warning : colour::faint);
}

void ClipPanel::paintJobs(Canvas& canvas, const Area& area) {
    Area rest = area;
    canvas.fill(rest, colour::background);
    for (size_t i = 0; i < std::min(jobRows_.size(), mostJobRows); ++i) {
        const JobQueue::Job& job = jobRows_[i];
        Area row = rest.takeTop(canvas.scaled(jobHeight)).inset(canvas.scaled(10), canvas.scaled(3));
        canvas.text(row.takeRight(canvas.scaled(24)), L"\x00D7", Writing::large, colour::faint,
                    Canvas::Align::middle);
        Area bar = row.takeBottom(canvas.scaled(8));
        canvas.text(row, job.name, Writing::small, colour::text);
        canvas.fill(bar, colour::raised);
        canvas.fill(bar.takeLeft(static_cast<int>(bar.width() * std::clamp(job.progress, 0.0, 1.0))),
                    colour::live);
    }
}

void ClipPanel::wishThumbnails() {
    for (const View::ClipRow& row : rows()) {
        const Address address = {row.clip.file, row.clip.frames.first};
        if (!row.gone && !thumbnails_.contains(address)) {
            thumbnails_[address] = {};
            pictures_->wish(PictureUse::thumbnail, {address.first, address.second});
        }
    }
}

void ClipPanel::press(POINT at) {
    SetFocus(GetAncestor(handle(), GA_ROOT));
    endRename(true);
    if (jobsArea().holds(at.x, at.y)) {
        cancelAt(at);
        return;
    }
    const int row = rowAt(at);
    if (row < 0) {
        return;
    }
    pressedRow_ = row;
    pressedAt_ = at;
    SetCapture(handle());
    if (onChoose) {
        onChoose(rows()[static_cast<size_t>(row)].clip.id);
    }
}

void ClipPanel::drop(POINT at) {
    const int from = pressedRow_;
    const int before = dragging_ ? dropBefore_ : -1;
    (void)at;
    ReleaseCapture();
    if (from < 0 || before < 0 || !onCommand) {
        return;
    }
    for (int i = from; i + 1 < before; ++i) {
        onCommand(Command::clipDown, {});
    }
    for (int i = from; i > before; --i) {
        onCommand(Command::clipUp, {});
    }
}

void ClipPanel::cancelAt(POINT at) {
    const Area area = jobsArea();
    const size_t row = static_cast<size_t>((at.y - area.top) / scaled(jobHeight));
    if (row < jobRows_.size() && at.x > area.right - scaled(40)) {
        jobs_->cancel(jobRows_[row].id);
    }
}

void ClipPanel::endRename(bool keep) {
    if (edit_ == nullptr) {
        return;
    }
    HWND edit = edit_;
    edit_ = nullptr;
    std::wstring name(static_cast<size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
    name.resize(static_cast<size_t>(GetWindowTextW(edit, name.data(), static_cast<int>(name.size()))));
    DestroyWindow(edit);
    SetFocus(GetAncestor(handle(), GA_ROOT));
    const auto row = std::find_if(rows().begin(), rows().end(),
                                  [this](const View::ClipRow& r) { return r.clip.id == renamed_; });
    if (keep && row != rows().end() && !name.empty() && name != row->clip.name && onCommand) {
        if (onChoose) {
            onChoose(renamed_);
        }
        onCommand(Command::renameClip, name);
    }
    invalidate();
}

void ClipPanel::keepInside() {
    const int whole = static_cast<int>(rows().size()) * scaled(rowHeight);
    scroll_ = std::clamp(scroll_, 0, std::max(0, whole - listArea().height()));
}

/// Scrolls a clip that was chosen by a key into view.
void ClipPanel::revealChosen() {
    const auto row =
        std::find_if(rows().begin(), rows().end(), [](const View::ClipRow& r) { return r.chosen; });
    const std::uint64_t chosen = row != rows().end() ? row->clip.id : 0;
    if (chosen == chosen_) {
        return;
    }
    chosen_ = chosen;
    if (chosen == 0) {
        return;
    }
    const Area area = rowArea(static_cast<size_t>(row - rows().begin()));
    const Area list = listArea();
    scroll_ += area.top < list.top ? area.top - list.top : std::max(0, area.bottom - list.bottom);
}

LRESULT CALLBACK ClipPanel::editProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<ClipPanel*>(GetWindowLongPtrW(edit, GWLP_USERDATA));
    const auto former = reinterpret_cast<WNDPROC>(reinterpret_cast<void*>(GetPropW(edit, L"former")));
    if (message == WM_KEYDOWN && (wParam == VK_RETURN || wParam == VK_ESCAPE)) {
        self->endRename(wParam == VK_RETURN);
        return 0;
    }
    if (message == WM_KILLFOCUS && self->edit_ == edit) {
        const LRESULT result = CallWindowProcW(former, edit, message, wParam, lParam);
        self->endRename(true);
        return result;
    }
    if (message == WM_NCDESTROY) {
        RemovePropW(edit, L"former");
    }
    return CallWindowProcW(former, edit, message, wParam, lParam);
}

} // namespace app
