/// @file
/// The list of clips, and the exports that run.
#pragma once

#include "app/jobs.h"
#include "app/session.h"
#include "app/window/picture_worker.h"
#include "app/window/window.h"

#include <functional>
#include <map>
#include <vector>

namespace app {

/// Shows each clip with thumbnail, name, time of day and length. A click chooses, a double click plays,
/// dragging changes the order, the right button brings what else can be done. A name is written over in its
/// place. Below are the exports with their progress and a cross that cancels.
class ClipPanel : public Panel {
public:
    /// As `createPanel`. What it is given must outlive it.
    bool createClips(HWND parent, Fonts& fonts, Session& session, JobQueue& jobs, PictureWorker& pictures);
    /// Draws what the view says now.
    void update();
    /// A thumbnail that was wished for is there.
    void takeThumbnail(const FrameAddress& address, dvPicture picture);
    /// Lets the chosen clip's name be written over.
    void beginRename();
    /// Whether a name is being written; keys belong to it then.
    bool renaming() const { return edit_ != nullptr; }
    /// The wheel was turned over the panel.
    void wheel(int steps);

    /// A clip was chosen by the mouse.
    std::function<void(std::uint64_t clip)> onChoose;
    /// A command for the chosen clip, with what it takes.
    std::function<void(Command, const std::wstring& argument)> onCommand;
    /// The right button on the chosen clip: a menu is wanted at this place of the screen.
    std::function<void(POINT)> onMenu;

protected:
    void paint(Canvas& canvas, const Area& area) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    using Address = std::pair<std::wstring, std::uint64_t>;

    Area listArea() const;
    Area headArea() const;
    Area jobsArea() const;
    Area rowArea(size_t row) const;
    int rowAt(POINT at) const;
    void paintRow(Canvas& canvas, const Area& area, const View::ClipRow& row);
    void paintJobs(Canvas& canvas, const Area& area);
    void wishThumbnails();
    void press(POINT at);
    void drop(POINT at);
    void cancelAt(POINT at);
    void endRename(bool keep);
    void keepInside();
    void revealChosen();
    const std::vector<View::ClipRow>& rows() const { return session_->view().clips; }
    static LRESULT CALLBACK editProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam);

    Session* session_ = nullptr;
    JobQueue* jobs_ = nullptr;
    PictureWorker* pictures_ = nullptr;
    std::vector<JobQueue::Job> jobRows_;
    std::map<Address, dvPicture> thumbnails_; // of width 0: wished for
    std::wstring drawn_;                      ///< what the drawn rows depend on
    HWND edit_ = nullptr;
    HBRUSH editGround_ = nullptr;
    std::uint64_t renamed_ = 0;
    std::uint64_t chosen_ = 0;
    int scroll_ = 0;
    int pressedRow_ = -1;
    POINT pressedAt_ = {};
    bool dragging_ = false;
    int dropBefore_ = -1;
};

} // namespace app
