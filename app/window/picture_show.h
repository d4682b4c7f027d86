/// @file
/// What lies over the picture, and what follows it.
#pragma once

#include "app/view.h"
#include "app/window/level_meter.h"
#include "app/window/output_window.h"
#include "app/window/picture_panel.h"
#include "app/window/picture_worker.h"
#include "app/window/sound_follower.h"

#include <string>

namespace app {

/// Keeps words, still, sound, level meter and the audience's window in step with the picture that the engine
/// shows. On the window's thread.
class PictureShow {
public:
    /// Both outlive this object.
    PictureShow(PicturePanel& picture, LevelMeter& meter) : picture_(picture), meter_(meter) {}

    /// Draws what the view says. `emptyWords` stand where there is no picture; `fullScreen`: nothing else
    /// says what is recorded.
    void update(const View& view, Language language, const std::wstring& emptyWords, bool fullScreen,
                PictureWorker& pictures);
    /// Gives the samples that have come to the level meter. Why there is no sound, told once, else empty.
    std::wstring tick();
    /// A picture for a still has been made.
    void takeStill(PictureWorker::Result result, const View& view);
    /// The audience's window.
    OutputWindow& output() { return output_; }

private:
    void showWords(const View& view, Language language, bool fullScreen);
    void follow(const View& view, PictureWorker& pictures);
    void showStill(Field field);

    PicturePanel& picture_;
    LevelMeter& meter_;
    OutputWindow output_;
    SoundFollower sound_;
    FrameAddress still_; ///< the one wished for or shown
    dvPicture stillPicture_;
    bool stillThere_ = false;
    Field stillField_ = Field::both;
};

} // namespace app
