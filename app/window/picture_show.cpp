#include "app/window/picture_show.h"

#include "app/text.h"
#include "app/window/status_bar.h"

#include <cmath>
#include <utility>

namespace app {

void PictureShow::update(const View& view, Language language, const std::wstring& emptyWords, bool fullScreen,
                         PictureWorker& pictures) {
    picture_.setEmpty(emptyWords);
    meter_.setMuted(view.mute);
    showWords(view, language, fullScreen);
    follow(view, pictures);
}

std::wstring PictureShow::tick() {
    sound_.meter([this](const std::int16_t* samples, size_t count, unsigned channels) {
        meter_.take(samples, count, channels);
    });
    meter_.tick();
    return sound_.complaint();
}

void PictureShow::takeStill(PictureWorker::Result result, const View& view) {
    if (result.address == still_ && result.picture.width != 0) {
        stillPicture_ = std::move(result.picture);
        stillThere_ = true;
        showStill(view.field);
    }
}

void PictureShow::showStill(Field field) {
    stillField_ = field;
    picture_.setStill({stillPicture_.pixels.data(), static_cast<int>(stillPicture_.width),
                       static_cast<int>(stillPicture_.height)},
                      field);
}

void PictureShow::showWords(const View& view, Language language, bool fullScreen) {
    const ModeSign sign = modeSign(view, language);
    const bool signal = view.mode != View::Mode::noSignal;
    std::wstring tag = view.mode == View::Mode::noCamera       ? std::wstring()
                       : view.mode == View::Mode::oldRecording ? view.source
                                                               : sign.words;
    if (!tag.empty() && view.showTime && !view.timeOfDay.empty()) {
        tag += L"   " + (view.held ? view.timeOfDay : view.timeOfDay.substr(0, 8));
    }
    if (view.held && view.field != Field::both) {
        tag += L"   " + text(Text::windowField, language, {view.field == Field::first ? L"1" : L"2"});
    }
    if (!tag.empty() && picture_.zoomFactor() > 1.0) {
        const double factor = std::round(picture_.zoomFactor() * 10.0) / 10.0;
        tag += L"   " + text(Text::windowZoom, language, {numberText(factor, language)});
    }
    picture_.setTag(tag, signal ? sign.colour : colour::raised);
    // In full screen there is no status bar.
    const bool records = fullScreen && view.recording >= View::Recording::recording;
    picture_.setCorner(records ? recordingWords(view) : std::wstring(), recordingColour(view));
    // What the sign says already stands above.
    std::wstring since = view.noSignalText;
    if (since.starts_with(sign.words + L" ")) {
        since.erase(0, sign.words.size() + 1);
    }
    picture_.setAlarm(signal ? std::wstring() : sign.words, signal ? std::wstring() : since, colour::alarm);
    const dvAspect aspect = sound_.aspect();
    picture_.setAspect(static_cast<int>(aspect.width), static_cast<int>(aspect.height));
}

/// Has stills, sound and output show what the engine shows.
void PictureShow::follow(const View& view, PictureWorker& pictures) {
    sound_.setMuted(view.mute || view.held || view.speed != 1.0);
    if (view.frame == noFrame || (view.file.empty() && !view.inRing)) {
        sound_.pause();
        output_.followNothing();
        picture_.setStill({}, Field::both);
        return;
    }
    const FrameAddress address = {view.file, view.frame};
    sound_.follow(address, !view.held && view.speed == 1.0);
    if (output_.opened()) {
        output_.follow(address, view.held ? view.field : Field::both);
    }
    const bool wanted = view.held && view.field != Field::both;
    if (!wanted) {
        stillThere_ = false;
        still_ = {};
        picture_.setStill({}, Field::both);
        return;
    }
    if (!(still_ == address)) {
        still_ = address;
        pictures.wish(PictureUse::still, address);
    }
    if (stillThere_ && stillField_ != view.field) {
        showStill(view.field);
    }
}

} // namespace app
