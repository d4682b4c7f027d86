/// @file
/// The main window of the application.
#pragma once

#include "app/marvo_engine.h"
#include "app/session.h"
#include "app/system_disk.h"
#include "app/window/clip_panel.h"
#include "app/window/file_recordings.h"
#include "app/window/full_screen.h"
#include "app/window/hover_view.h"
#include "app/window/main_menu.h"
#include "app/window/message_bar.h"
#include "app/window/picture_show.h"
#include "app/window/remote_port.h"
#include "app/window/status_bar.h"
#include "app/window/timeline_panel.h"
#include "app/window/transport_bar.h"

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace app {

/// The window that the operator works with. What is decided is decided by the session; this draws its view
/// and passes on what hands, menus and remote hands want. Lives on the thread that drives the engine.
class ReplayWindow : public Window {
public:
    ReplayWindow() = default;
    ~ReplayWindow() override;

    /// Reads the settings, makes the window and looks for the camera; then opens the first of `files`. False
    /// without a display.
    bool open(const std::vector<std::wstring>& files, bool fullScreen);
    /// Dispatches messages until the window is closed.
    void run();

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    std::wstring words(Text id) const { return text(id, settings_.language); }
    bool createPanels();
    void connectPanels();
    void readSettings();
    void keepSettings();
    void useSettings(bool menus);
    Settings forSession() const;
    void setEngine();
    void tellFindings();
    void tellOfCamera();
    void tellOfMonitor();
    void showLooking();
    void findCameraWords();
    void openFile(const std::wstring& file);

    bool takeKey(const MSG& message);
    void perform(Command command, const std::wstring& argument = {});
    void performHere(Command command, const std::wstring& argument);
    void exportChosen(const std::wstring& argument);
    void exportAll(const std::wstring& argument);
    bool addExport(const Clip& clip, const std::wstring& target);
    void showSettings();
    void listen();

    void tick();
    void refresh();
    void takePictures();
    void tellEndedJobs();
    void hover(std::optional<std::uint64_t> place, int x);
    void wheel(WPARAM wParam, LPARAM lParam);
    void setFullScreen(bool on);
    void toggleOutput();
    void layOut();

    SystemDisk disk_;
    FileRecordings recordings_;
    std::wstring settingsFile_;
    Settings settings_;                  ///< as the file has them
    std::vector<std::wstring> findings_; ///< what is wrong in the settings file
    std::wstring portFinding_;           ///< why nobody can be heard; empty: all is well
    Fonts fonts_{96};
    std::unique_ptr<MarvoEngine> engine_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<PictureWorker> pictures_;
    JobQueue jobs_;
    MainMenu menu_;
    PicturePanel picture_;
    LevelMeter meter_;
    ClipPanel clips_;
    TimelinePanel timeline_;
    TransportBar transport_;
    StatusBar status_;
    MessageBar message_;
    HoverView hover_;
    std::unique_ptr<PictureShow> show_;
    std::unique_ptr<RemotePort> remote_;
    std::deque<std::pair<Command, std::wstring>> wishes_; ///< of remote hands, for the window
    bool looking_ = false;
    std::wstring noCameraWords_;
    FullScreen fullScreen_;
    int wheelRest_ = 0;
};

} // namespace app
