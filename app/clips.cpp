#include "app/clips.h"

#include "app/text.h"

#include <algorithm>
#include <utility>

namespace app {

namespace {

/// Nobody takes more changes back, and memory stays small on a long evening.
constexpr std::size_t mostUndo = 200;

} // namespace

void ClipList::remember(Change change) {
    if (undo_.size() == mostUndo) {
        undo_.erase(undo_.begin());
    }
    undo_.push_back({change, clips_, chosen_});
    ++version_;
}

const Clip& ClipList::add(Clip clip) {
    remember(Change::added);
    clip.id = chosen_ = nextId_++;
    return clips_.emplace_back(std::move(clip));
}

bool ClipList::remove(std::uint64_t id) {
    const std::optional<std::size_t> at = position(id);
    if (!at) {
        return false;
    }
    remember(Change::removed);
    clips_.erase(clips_.begin() + static_cast<std::ptrdiff_t>(*at));
    chosen_ = clips_.empty() ? 0 : clips_[std::min(*at, clips_.size() - 1)].id;
    return true;
}

bool ClipList::rename(std::uint64_t id, const std::wstring& name) {
    const std::optional<std::size_t> at = position(id);
    const bool blank = name.find_first_not_of(L" \t") == name.npos;
    if (!at || blank || clips_[*at].name == name) {
        return false;
    }
    remember(Change::renamed);
    clips_[*at].name = name;
    // The name is one line of a file.
    std::replace_if(
        clips_[*at].name.begin(), clips_[*at].name.end(), [](wchar_t c) { return c < L' '; }, L' ');
    return true;
}

bool ClipList::move(std::uint64_t id, int by) {
    const std::optional<std::size_t> at = position(id);
    if (!at || clips_.empty()) {
        return false;
    }
    const auto last = static_cast<std::ptrdiff_t>(clips_.size() - 1);
    const auto from = static_cast<std::ptrdiff_t>(*at);
    const std::ptrdiff_t to = std::clamp<std::ptrdiff_t>(from + by, 0, last);
    if (to == from) {
        return false;
    }
    remember(Change::moved);
    const auto first = clips_.begin();
    if (to < from) {
        std::rotate(first + to, first + from, first + from + 1);
    } else {
        std::rotate(first + from, first + from + 1, first + to + 1);
    }
    return true;
}

std::optional<ClipList::Change> ClipList::undo() {
    if (undo_.empty()) {
        return std::nullopt;
    }
    Undo last = std::move(undo_.back());
    undo_.pop_back();
    clips_ = std::move(last.before);
    chosen_ = last.chosen;
    ++version_;
    return last.change;
}

void ClipList::load(std::vector<Clip> clips) {
    clips_ = std::move(clips);
    for (Clip& clip : clips_) {
        clip.id = nextId_++;
    }
    undo_.clear();
    chosen_ = clips_.empty() ? 0 : clips_.front().id;
    ++version_;
}

const Clip* ClipList::find(std::uint64_t id) const {
    const std::optional<std::size_t> at = position(id);
    return at ? &clips_[*at] : nullptr;
}

std::optional<std::size_t> ClipList::position(std::uint64_t id) const {
    const auto found =
        std::find_if(clips_.begin(), clips_.end(), [id](const Clip& clip) { return clip.id == id; });
    return found == clips_.end() ? std::nullopt : std::optional<std::size_t>(found - clips_.begin());
}

bool ClipList::choose(std::uint64_t id) {
    const bool known = find(id) != nullptr;
    chosen_ = known ? id : chosen_;
    return known;
}

bool ClipList::chooseNext(int by) {
    const std::optional<std::size_t> at = position(chosen_);
    const auto to = static_cast<std::ptrdiff_t>(at.value_or(0)) + by;
    if (!at || to < 0 || to >= static_cast<std::ptrdiff_t>(clips_.size())) {
        return false;
    }
    chosen_ = clips_[static_cast<std::size_t>(to)].id;
    return true;
}

std::wstring ClipList::freshName(Language language) const {
    for (std::size_t number = clips_.size() + 1;; ++number) {
        const std::wstring name = text(Text::clipName, language, {std::to_wstring(number)});
        if (std::none_of(clips_.begin(), clips_.end(), [&](const Clip& clip) { return clip.name == name; })) {
            return name;
        }
    }
}

} // namespace app
