#include "app/clip_desk.h"

#include <algorithm>
#include <utility>

namespace app {

std::vector<std::wstring> ClipDesk::load(const Segment& recording, Language language) {
    ClipFileContent content = ClipFile::read(disk_, recording.file, language);
    for (Clip& clip : content.clips) {
        clip.frameDuration_100ns = recording.frameDuration_100ns;
        // A recording's last frame is not played, but a clip may have it.
        if (clip.frames.last > recording.frames) {
            content.findings.push_back(
                text(Text::clipFileBeyond, language,
                     {clip.name, std::to_wstring(clip.frames.last), std::to_wstring(recording.frames)}));
        }
    }
    File file{recording.file, {}, std::move(content.kept), L""};
    if (content.refused) {
        // For the middle of a sentence.
        file.refused = content.findings.front();
        file.refused.resize(file.refused.find_last_not_of(L'.') + 1);
    }
    file.written = content.clips.empty() && file.kept.empty()
                       ? ""
                       : ClipFile::format(recording.file, content.clips, file.kept);
    list.load(std::move(content.clips));
    files_ = {std::move(file)};
    markIn.reset();
    unsavedFile_.clear();
    return content.findings;
}

int ClipDesk::add(const Reel& reel, FrameSpan places, Language language) {
    int made = 0;
    for (const Segment& segment : reel.segments()) {
        const bool touched = segment.there() && !segment.file.empty() &&
                             segment.places().first <= places.last && places.first <= segment.places().last;
        if (!touched) {
            continue;
        }
        const std::uint64_t first = std::max(places.first, segment.places().first);
        const std::uint64_t last = std::min(places.last, segment.places().last);
        Clip clip;
        clip.name = list.freshName(language);
        clip.file = segment.file;
        clip.frames = {segment.frameOf(first), segment.frameOf(last)};
        clip.timeOfDay_ms = reel.timeOfDay_ms(first);
        clip.frameDuration_100ns = segment.frameDuration_100ns;
        list.add(std::move(clip));
        ++made;
    }
    return made;
}

ClipDesk::File& ClipDesk::fileOf(const std::wstring& recording) {
    const auto found = std::find_if(files_.begin(), files_.end(),
                                    [&](const File& file) { return samePath(file.recording, recording); });
    return found != files_.end() ? *found : files_.emplace_back(File{recording, {}, {}, {}});
}

bool ClipDesk::save() {
    for (const Clip& clip : list.clips()) {
        fileOf(clip.file);
    }
    unsavedFile_.clear();
    whyUnsaved_.clear();
    for (File& file : files_) {
        std::vector<Clip> clips;
        std::copy_if(list.clips().begin(), list.clips().end(), std::back_inserter(clips),
                     [&](const Clip& clip) { return samePath(clip.file, file.recording); });
        const bool none = clips.empty() && file.kept.empty();
        std::string text = none ? "" : ClipFile::format(file.recording, clips, file.kept);
        if (text == file.written) {
            continue;
        }
        std::wstring why = file.refused;
        if (why.empty() && ClipFile::write(disk_, file.recording, clips, file.kept, why)) {
            file.written = std::move(text);
        } else {
            unsavedFile_ = nameOf(file.recording);
            whyUnsaved_ = why;
        }
    }
    return unsavedFile_.empty();
}

} // namespace app
