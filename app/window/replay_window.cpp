#include "app/window/replay_window.h"

#include "app/clip_file.h"
#include "app/protocol.h"
#include "app/window/camera_list.h"
#include "app/window/exporter.h"
#include "app/window/file_dialogs.h"
#include "app/window/help_dialog.h"
#include "app/window/settings_dialog.h"

#include <shellapi.h>

#include <algorithm>

namespace app {

namespace {

constexpr UINT playMessage = WM_APP + 10;
constexpr UINT pictureMessage = WM_APP + 11;
constexpr UINT wishMessage = WM_APP + 12;
constexpr UINT dpiChanged = 0x02E0; // WM_DPICHANGED, which older headers do not name
constexpr UINT_PTR tickTimer = 1;
constexpr UINT tick_ms = 40;
constexpr int firstWidth = 1280;
constexpr int firstHeight = 960;
constexpr int leastWidth = 860;
constexpr int leastHeight = 620;
constexpr int clipsWidth = 300;
constexpr int meterWidth = 34;
constexpr int timelineHeight = 104;
constexpr int transportHeight = 78;
constexpr int statusHeight = 84;
constexpr int messageHeight = 36;
constexpr int mostPath = 32768;

Moment now() {
    SYSTEMTIME local = {};
    GetLocalTime(&local);
    Calendar calendar;
    calendar.year = local.wYear;
    calendar.month = local.wMonth;
    calendar.day = local.wDay;
    calendar.hour = local.wHour;
    calendar.minute = local.wMinute;
    calendar.second = local.wSecond;
    calendar.millisecond = local.wMilliseconds;
    return {static_cast<std::int64_t>(GetTickCount64()), timeOfDay_ms(calendar)};
}

std::wstring fullPath(const std::wstring& name) {
    std::wstring path(mostPath, L'\0');
    path.resize(GetFullPathNameW(name.c_str(), mostPath, path.data(), nullptr));
    return path.empty() ? name : path;
}

std::wstring firstKey(const KeyMap& keys, Command command) {
    const std::vector<Key> own = keys.keys(command);
    return own.empty() ? std::wstring(L"-") : own.front().text();
}

bool isDown(int key) {
    return GetKeyState(key) < 0;
}

} // namespace

ReplayWindow::~ReplayWindow() {
    // The threads that read frames end before the engine that has them.
    show_.reset();
    pictures_.reset();
    remote_.reset();
    jobs_.cancelAll();
    session_.reset();
    engine_.reset();
    destroy();
}

bool ReplayWindow::open(const std::vector<std::wstring>& files, bool fullScreen) {
    readSettings();
    RECT work = {};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const int width = std::min<int>(firstWidth, work.right - work.left);
    const int height = std::min<int>(firstHeight, work.bottom - work.top);
    const int left = work.left + (work.right - work.left - width) / 2;
    const int top = work.top + (work.bottom - work.top - height) / 2;
    if (!create(L"Marvo replay", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_ACCEPTFILES, nullptr,
                {left, top, left + width, top + height})) {
        return false;
    }
    fonts_.setDpi(dpiOf(handle()));
    if (!picture_.createPicture(handle(), fonts_)) {
        return false;
    }
    engine_ = std::make_unique<MarvoEngine>(picture_.video(), handle(), playMessage);
    session_ = std::make_unique<Session>(*engine_, disk_, recordings_, forSession());
    pictures_ = std::make_unique<PictureWorker>(handle(), pictureMessage);
    if (!createPanels()) {
        return false;
    }
    show_ = std::make_unique<PictureShow>(picture_, meter_);
    connectPanels();
    useSettings(true);
    layOut();
    if (fullScreen) {
        setFullScreen(true);
    }
    ShowWindow(handle(), SW_SHOW);
    SetForegroundWindow(handle());
    SetFocus(handle());
    looking_ = true;
    showLooking();
    session_->start(now());
    looking_ = false;
    findCameraWords();
    tellFindings();
    if (!files.empty()) {
        openFile(files.front());
    }
    SetTimer(handle(), tickTimer, tick_ms, nullptr);
    return true;
}

void ReplayWindow::run() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (!takeKey(message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

LRESULT ReplayWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (session_ == nullptr) {
        return Window::handleMessage(message, wParam, lParam);
    }
    switch (message) {
    case playMessage:
        session_->shown(engine_->info().frame);
        return 0;
    case pictureMessage:
        takePictures();
        return 0;
    case WM_TIMER:
        tick();
        return 0;
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED) {
            layOut();
        }
        return 0;
    case WM_GETMINMAXINFO: {
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        info->ptMinTrackSize = {fonts_.scaled(leastWidth), fonts_.scaled(leastHeight)};
        fullScreen_.limit(handle(), info->ptMinTrackSize);
        return 0;
    }
    case WM_MOUSEWHEEL:
        wheel(wParam, lParam);
        return 0;
    case WM_COMMAND:
        if (const std::optional<Command> command = MainMenu::commandOf(LOWORD(wParam))) {
            perform(*command);
        } else if (const std::optional<size_t> recent = MainMenu::recentOf(LOWORD(wParam))) {
            if (*recent < settings_.recent.size()) {
                openFile(std::wstring(settings_.recent[*recent]));
            }
        }
        return 0;
    case wishMessage:
        // A dialog that one of them opens dispatches messages, too.
        while (!wishes_.empty()) {
            const auto [command, argument] = wishes_.front();
            wishes_.pop_front();
            perform(command, argument);
        }
        return 0;
    case WM_NCPAINT:
    case WM_NCACTIVATE: {
        const LRESULT result = Window::handleMessage(message, wParam, lParam);
        menu_.paintRest(handle());
        return result;
    }
    case WM_INITMENUPOPUP:
        menu_.mark(reinterpret_cast<HMENU>(wParam), session_->view());
        return 0;
    case WM_MENUCHAR:
        return menu_.letter(static_cast<wchar_t>(LOWORD(wParam)), reinterpret_cast<HMENU>(lParam));
    case WM_MEASUREITEM:
        return menu_.measure(*reinterpret_cast<MEASUREITEMSTRUCT*>(lParam), handle(), fonts_);
    case WM_DRAWITEM:
        return menu_.draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam), fonts_);
    case WM_DROPFILES: {
        auto* drop = reinterpret_cast<HDROP>(wParam);
        std::wstring file(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
        file.resize(DragQueryFileW(drop, 0, file.data(), static_cast<UINT>(file.size())));
        DragFinish(drop);
        openFile(file);
        return 0;
    }
    case WM_DISPLAYCHANGE:
        show_->output().monitorsChanged();
        tellOfMonitor();
        fullScreen_.follow(handle());
        return 0;
    case dpiChanged: {
        fonts_.setDpi(HIWORD(wParam));
        const RECT& wanted = *reinterpret_cast<const RECT*>(lParam);
        if (!fullScreen_.on()) {
            place({wanted.left, wanted.top, wanted.right, wanted.bottom});
        }
        useSettings(true);
        layOut();
        return 0;
    }
    case WM_CLOSE:
        perform(Command::quit);
        return 0;
    case WM_ENDSESSION:
        if (wParam != FALSE) {
            session_->shutDown();
        }
        return 0;
    case WM_DESTROY:
        KillTimer(handle(), tickTimer);
        PostQuitMessage(0);
        return 0;
    }
    return Window::handleMessage(message, wParam, lParam);
}

bool ReplayWindow::createPanels() {
    const bool made = meter_.createPanel(handle(), fonts_) &&
                      clips_.createClips(handle(), fonts_, *session_, jobs_, *pictures_) &&
                      timeline_.createTimeline(handle(), fonts_, *session_) &&
                      transport_.createBar(handle(), fonts_) && status_.createPanel(handle(), fonts_) &&
                      message_.createPanel(handle(), fonts_) && hover_.createHover(handle(), fonts_);
    picture_.show(true);
    return made;
}

void ReplayWindow::connectPanels() {
    picture_.onVideoSize = [](int width, int height) { dvFE.setSize(width, height); };
    picture_.onDoubleClick = [this] { perform(Command::fullScreen); };
    picture_.onMenu = [this](POINT at) { menu_.popUp(handle(), at, false, settings_); };
    timeline_.onScrub = [this](std::uint64_t place) {
        session_->scrubTo(place);
        refresh();
    };
    timeline_.onGo = [this](std::uint64_t place) {
        session_->scrubTo(place);
        perform(Command::playForward);
    };
    timeline_.onClip = [this](std::uint64_t clip, bool play) {
        session_->chooseClip(clip);
        if (play) {
            perform(Command::playClip);
        }
        refresh();
    };
    timeline_.onJog = [this](int frames) {
        session_->jog(frames);
        refresh();
    };
    timeline_.onShuttle = [this](int steps) {
        session_->shuttle(steps);
        refresh();
    };
    timeline_.onHover = [this](std::optional<std::uint64_t> place, int x) { hover(place, x); };
    clips_.onChoose = [this](std::uint64_t clip) {
        session_->chooseClip(clip);
        refresh();
    };
    const auto command = [this](Command wanted, const std::wstring& argument) { perform(wanted, argument); };
    clips_.onCommand = command;
    clips_.onMenu = [this](POINT at) { menu_.popUp(handle(), at, true, settings_); };
    transport_.onCommand = [this](Command wanted) { perform(wanted); };
    message_.onAnswer = [this](bool yes) { perform(yes ? Command::confirm : Command::dismiss); };
    show_->output().onClosed = [this] { toggleOutput(); };
}

void ReplayWindow::readSettings() {
    settingsFile_ = fullPath(L"marvo-replay.ini");
    settings_ = SettingsFile::read(disk_, settingsFile_, findings_);
}

void ReplayWindow::keepSettings() {
    std::wstring why;
    if (!SettingsFile::write(disk_, settingsFile_, settings_, why)) {
        session_->tell(text(Text::windowSettingsNotKept, settings_.language, {settingsFile_, why}), true);
    }
}

/// Has everything work with the settings as they are now.
void ReplayWindow::useSettings(bool menus) {
    session_->apply(forSession());
    setEngine();
    transport_.setKeys(settings_.keys, settings_.language);
    if (menus) {
        fullScreen_.setMenu(handle(), menu_.build(settings_));
    }
    listen();
}

/// What the engine is to do at its next start. The cameras are counted anew: they come and go.
void ReplayWindow::setEngine() {
    engine_->set({cameraNumber(settings_.camera), static_cast<unsigned long>(settings_.ring_frames),
                  settings_.delay_ms, settings_.deinterlace});
}

/// Tells of what was wrong at the start; the log has all of it.
void ReplayWindow::tellFindings() {
    std::vector<std::wstring> findings = findings_;
    if (!portFinding_.empty()) {
        findings.insert(findings.begin(), portFinding_);
    }
    for (const std::wstring& finding : findings) {
        engine_->log(finding);
    }
    if (!findings.empty()) {
        session_->tell(firstOf(findings, settings_.language), true);
    } else {
        tellOfCamera();
    }
}

/// Tells when another camera is used than the one that the settings name.
void ReplayWindow::tellOfCamera() {
    const std::vector<std::wstring> names = cameraNames();
    const bool there = std::find(names.begin(), names.end(), settings_.camera) != names.end();
    if (!settings_.camera.empty() && !there && session_->view().cameraBuilt && !names.empty()) {
        session_->tell(text(Text::windowOtherCamera, settings_.language, {settings_.camera, names.front()}),
                       true);
    }
}

/// Tells when the audience's window cannot be where the settings want it.
void ReplayWindow::tellOfMonitor() {
    const int there = GetSystemMetrics(SM_CMONITORS);
    if (show_->output().opened() && settings_.outputMonitor > there) {
        session_->tell(text(Text::windowNoMonitor, settings_.language,
                            {std::to_wstring(settings_.outputMonitor), std::to_wstring(there)}),
                       true);
    }
}

/// The settings with what an empty entry stands for.
Settings ReplayWindow::forSession() const {
    Settings settings = settings_;
    if (settings.folder.empty()) {
        settings.folder = joined(folderOf(settingsFile_), L"recordings");
    }
    // The setting is for the start.
    if (session_ != nullptr) {
        settings.mute = session_->settings().mute;
    }
    return settings;
}

void ReplayWindow::showLooking() {
    picture_.setEmpty(words(Text::windowLooking));
    setEngine();
    UpdateWindow(handle());
    UpdateWindow(picture_.handle());
}

/// What is told in place of a picture when there is none.
void ReplayWindow::findCameraWords() {
    std::wstring list;
    for (const std::wstring& name : cameraNames()) {
        list += list.empty() ? name : L", " + name;
    }
    const std::wstring again = firstKey(settings_.keys, Command::lookForCamera);
    const std::wstring other = firstKey(settings_.keys, list.empty() ? Command::open : Command::settings);
    noCameraWords_ = list.empty() ? text(Text::windowNoDevice, settings_.language, {again, other})
                                  : text(Text::windowDevices, settings_.language, {list, again, other});
}

void ReplayWindow::openFile(const std::wstring& file) {
    session_->open(fullPath(file));
    refresh();
}

/// Gives a key that went down to the command that it means. False for all else, which goes its usual way.
bool ReplayWindow::takeKey(const MSG& message) {
    const bool key = message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
    const bool own = message.hwnd == handle() || IsChild(handle(), message.hwnd);
    if (!key || !own || clips_.renaming()) {
        return false;
    }
    const Key pressed = {static_cast<int>(message.wParam), isDown(VK_CONTROL), isDown(VK_SHIFT),
                         isDown(VK_MENU)};
    const bool repeated = (message.lParam & 0x40000000) != 0;
    if (fullScreen_.on() && pressed.code == VK_ESCAPE && !session_->view().question) {
        perform(Command::fullScreen);
        return true;
    }
    const std::optional<Command> command = settings_.keys.find(pressed, repeated);
    if (command) {
        perform(*command);
    }
    return command.has_value();
}

void ReplayWindow::perform(Command command, const std::wstring& argument) {
    looking_ = command == Command::lookForCamera && !session_->view().cameraBuilt;
    if (looking_) {
        showLooking();
    }
    if (session_->perform(command, argument) == Outcome::window) {
        performHere(command, argument);
    }
    if (looking_) {
        looking_ = false;
        findCameraWords();
        tellOfCamera();
    }
    refresh();
}

/// What is the window's own business.
void ReplayWindow::performHere(Command command, const std::wstring& argument) {
    const Area panel = picture_.client();
    const POINT middle = {panel.width() / 2, panel.height() / 2};
    switch (command) {
    case Command::open:
        if (const auto file = askForRecording(handle(), session_->settings().folder, settings_.language)) {
            openFile(*file);
        }
        break;
    case Command::exportClip:
        exportChosen(argument);
        break;
    case Command::exportAll:
        exportAll(argument);
        break;
    case Command::renameClip:
        setFullScreen(false);
        clips_.beginRename();
        break;
    case Command::fullScreen:
        setFullScreen(!fullScreen_.on());
        break;
    case Command::outputWindow:
        toggleOutput();
        break;
    case Command::zoomIn:
        picture_.zoom(1, middle);
        break;
    case Command::zoomOut:
        picture_.zoom(-1, middle);
        break;
    case Command::zoomWhole:
        picture_.resetZoom();
        break;
    case Command::settings:
        showSettings();
        break;
    case Command::help: {
        HelpDialog help;
        help.run(handle(), settings_);
        break;
    }
    default:
        break;
    }
}

void ReplayWindow::exportChosen(const std::wstring& argument) {
    const std::vector<View::ClipRow>& rows = session_->view().clips;
    const auto row =
        std::find_if(rows.begin(), rows.end(), [](const View::ClipRow& known) { return known.chosen; });
    if (row == rows.end()) {
        session_->tell(words(Text::windowNoClipToExport), true);
        return;
    }
    const Clip clip = row->clip;
    if (!argument.empty()) {
        addExport(clip, fullPath(argument));
        return;
    }
    if (const auto target = askForExport(handle(), clip.name, settings_.language)) {
        addExport(clip, *target);
    }
}

void ReplayWindow::exportAll(const std::wstring& argument) {
    std::wstring folder = argument;
    if (session_->view().clips.empty()) {
        session_->tell(words(Text::windowNoClipToExport), true);
        return;
    }
    if (folder.empty()) {
        const std::optional<std::wstring> chosen = askForFolder(handle(), words(Text::windowExportAllTitle));
        if (!chosen) {
            return;
        }
        folder = *chosen;
    }
    std::vector<std::wstring> targets;
    for (const View::ClipRow& row : session_->view().clips) {
        const std::wstring stem = joined(fullPath(folder), ClipFile::fileWord(row.clip.name));
        std::wstring target = stem + L".avi";
        for (int i = 2; disk_.exists(target) || std::count(targets.begin(), targets.end(), target) != 0;
             ++i) {
            target = stem + L" (" + std::to_wstring(i) + L").avi";
        }
        targets.push_back(target);
        addExport(row.clip, target);
    }
}

bool ReplayWindow::addExport(const Clip& clip, const std::wstring& target) {
    if (samePath(clip.file, target)) {
        session_->tell(text(Text::windowTargetIsSource, settings_.language, {nameOf(target)}), true);
        return false;
    }
    jobs_.add(nameOf(target), exportWork(clip, target));
    return true;
}

void ReplayWindow::showSettings() {
    SettingsDialog dialog;
    Settings changed = settings_;
    if (!dialog.run(handle(), changed)) {
        return;
    }
    const bool later = changed.camera != settings_.camera || changed.ring_frames != settings_.ring_frames ||
                       changed.deinterlace != settings_.deinterlace;
    settings_ = changed;
    keepSettings();
    useSettings(true);
    findCameraWords();
    if (!session_->view().cameraBuilt) {
        perform(Command::lookForCamera);
    } else if (later) {
        session_->tell(words(Text::windowSettingsLater), false);
    }
    if (!portFinding_.empty()) {
        session_->tell(portFinding_, true);
    }
    layOut();
}

void ReplayWindow::listen() {
    if (remote_ == nullptr) {
        remote_ = std::make_unique<RemotePort>([this] {
            const auto connection = std::make_shared<ProtocolConnection>(
                *session_, settings_.token, [this](Command command, const std::wstring& argument) {
                    // Not in the midst of the port's business: a dialog would hold it up.
                    wishes_.emplace_back(command, argument);
                    return PostMessageW(handle(), wishMessage, 0, 0) != FALSE;
                });
            return [this, connection](std::string_view bytes, bool& closed) {
                const std::string answer = connection->receive(bytes);
                closed = connection->closed();
                refresh();
                return answer;
            };
        });
    }
    const int wanted = settings_.token.empty() ? 0 : settings_.port;
    portFinding_.clear();
    if (wanted != remote_->port() && !remote_->listen(wanted)) {
        portFinding_ = text(Text::windowPortTaken, settings_.language,
                            {std::to_wstring(wanted),
                             remote_->taken() ? words(Text::windowPortInUse) : remote_->explanation()});
    }
}

void ReplayWindow::tick() {
    session_->tick(now());
    tellEndedJobs();
    session_->setBusy(jobs_.busy());
    const std::wstring complaint = show_->tick();
    if (!complaint.empty()) {
        session_->tell(text(Text::windowNoSound, settings_.language, {complaint}), true);
    }
    refresh();
    if (session_->view().quit) {
        session_->shutDown();
        DestroyWindow(handle());
    }
}

void ReplayWindow::refresh() {
    if (handle() == nullptr) {
        return;
    }
    const View& view = session_->view();
    if (settings_.recent != session_->settings().recent) {
        settings_.recent = session_->settings().recent;
        keepSettings();
        useSettings(true);
    }
    status_.update(view, settings_.language);
    timeline_.update();
    clips_.update();
    transport_.update(view);
    message_.update(view, settings_.language);
    if (fullScreen_.on() && message_.visible() == message_.empty()) {
        layOut();
    }
    const std::wstring empty = looking_                            ? words(Text::windowLooking)
                               : view.mode == View::Mode::noCamera ? noCameraWords_
                                                                   : std::wstring();
    show_->update(view, settings_.language, empty, fullScreen_.on(), *pictures_);
}

void ReplayWindow::takePictures() {
    PictureWorker::Result result;
    while (pictures_->take(result)) {
        switch (result.use) {
        case PictureUse::thumbnail:
            clips_.takeThumbnail(result.address, std::move(result.picture));
            break;
        case PictureUse::hover:
            hover_.setPicture(std::move(result.picture));
            break;
        default:
            show_->takeStill(std::move(result), session_->view());
            break;
        }
    }
}

void ReplayWindow::tellEndedJobs() {
    for (const JobQueue::Job& job : jobs_.takeOver()) {
        if (job.state == JobQueue::State::done) {
            session_->tell(text(Text::windowExported, settings_.language, {job.name}), false);
        } else if (job.state == JobQueue::State::cancelled) {
            session_->tell(text(Text::windowExportCancelled, settings_.language, {job.name}), false);
        } else {
            session_->tell(text(Text::windowExportFailed, settings_.language, {job.name, job.why}), true);
        }
    }
}

void ReplayWindow::hover(std::optional<std::uint64_t> place, int x) {
    if (!place) {
        hover_.show(false);
        // A rolling file must be free to go.
        recordings_.close();
        return;
    }
    RECT line = {};
    GetWindowRect(timeline_.handle(), &line);
    MapWindowPoints(nullptr, handle(), reinterpret_cast<POINT*>(&line), 2);
    hover_.showAt(line.left + x, line.top, client().width(), session_->describe(*place));
    if (const std::optional<PictureAt> at = session_->pictureAt(*place)) {
        pictures_->wish(PictureUse::hover, {at->file, at->frame});
    }
}

void ReplayWindow::wheel(WPARAM wParam, LPARAM lParam) {
    wheelRest_ += static_cast<short>(HIWORD(wParam));
    const int steps = wheelRest_ / WHEEL_DELTA;
    wheelRest_ -= steps * WHEEL_DELTA;
    if (steps == 0) {
        return;
    }
    const POINT screen = pointOf(lParam);
    const auto over = [&](const Window& window, POINT& at) {
        at = screen;
        ScreenToClient(window.handle(), &at);
        return window.visible() && window.client().holds(at.x, at.y);
    };
    const bool shift = (LOWORD(wParam) & MK_SHIFT) != 0;
    const bool control = (LOWORD(wParam) & MK_CONTROL) != 0;
    POINT at = {};
    if (over(clips_, at)) {
        clips_.wheel(steps);
    } else if (over(picture_, at) && !shift) {
        picture_.zoom(steps, at);
    } else {
        over(timeline_, at);
        timeline_.wheel(steps, shift, control, at.x);
    }
}

void ReplayWindow::setFullScreen(bool on) {
    hover_.show(false);
    if (on) {
        fullScreen_.enter(handle());
    } else {
        fullScreen_.leave(handle());
    }
    layOut();
}

void ReplayWindow::toggleOutput() {
    OutputWindow& output = show_->output();
    if (output.opened()) {
        output.close();
    } else if (!output.open(handle(), settings_.outputMonitor)) {
        session_->tell(words(Text::windowOutputFailed), true);
    }
    tellOfMonitor();
    SetForegroundWindow(handle());
    SetFocus(handle());
}

void ReplayWindow::layOut() {
    Area rest = client();
    const auto put = [](Window& window, const Area& area, bool shown) {
        window.place(area);
        if (window.visible() != shown) {
            window.show(shown);
        }
    };
    const bool all = !fullScreen_.on();
    const bool message = all || !message_.empty();
    put(message_, message ? rest.takeBottom(fonts_.scaled(messageHeight)) : Area(), message);
    put(status_, all ? rest.takeBottom(fonts_.scaled(statusHeight)) : Area(), all);
    put(transport_, all ? rest.takeBottom(fonts_.scaled(transportHeight)) : Area(), all);
    put(timeline_, all ? rest.takeBottom(fonts_.scaled(timelineHeight)) : Area(), all);
    put(clips_, all ? rest.takeRight(fonts_.scaled(clipsWidth)) : Area(), all);
    put(meter_, all ? rest.takeRight(fonts_.scaled(meterWidth)) : Area(), all);
    picture_.place(rest);
}

} // namespace app
