/// @file
/// The operator's clips.
#pragma once

#include "app/engine.h"
#include "app/text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// A marked part of a recording.
struct Clip {
    std::uint64_t id = 0; ///< given by the list; stays for the list's life
    std::wstring name;
    std::wstring file;             ///< the recording's path
    FrameSpan frames;              ///< numbers in that file
    std::int64_t timeOfDay_ms = 0; ///< of its first frame; 0: not known
    std::int64_t frameDuration_100ns = 400000;

    bool operator==(const Clip&) const = default;
    /// Its length.
    std::int64_t length_ms() const {
        return static_cast<std::int64_t>(frames.length()) * frameDuration_100ns / 10000;
    }
};

/// Clips in the operator's order, with every change undoable. One clip may be the chosen one.
class ClipList {
public:
    /// Adds a clip at the end and chooses it. Its id is given here.
    const Clip& add(Clip clip);
    /// Takes a clip out; the one behind it is chosen. False when there is none of that id.
    bool remove(std::uint64_t id);
    /// Gives it another name. False for an unknown id, an empty name, and the name it has.
    bool rename(std::uint64_t id, const std::wstring& name);
    /// Moves it up (negative) or down in the list. False when it is at the end already.
    bool move(std::uint64_t id, int by);
    /// Takes the last change back; what it was, or nothing when there is none.
    enum class Change { added, removed, renamed, moved };
    std::optional<Change> undo();
    /// The list as it was read from files: without anything to undo.
    void load(std::vector<Clip> clips);

    /// All clips in order.
    const std::vector<Clip>& clips() const { return clips_; }
    /// The clip of that id, or null.
    const Clip* find(std::uint64_t id) const;
    /// Its position from 0; nothing for an unknown id.
    std::optional<std::size_t> position(std::uint64_t id) const;
    /// The chosen clip, or null.
    const Clip* chosen() const { return find(chosen_); }
    /// Chooses a clip; false when there is none of that id.
    bool choose(std::uint64_t id);
    /// Chooses the next or the one before; false at the ends.
    bool chooseNext(int by);
    /// The name that a clip gets by itself: "Clip 7", one that the list does not have.
    std::wstring freshName(Language language) const;
    /// Raised by every change of the clips.
    std::uint64_t version() const { return version_; }

private:
    struct Undo {
        Change change;
        std::vector<Clip> before;
        std::uint64_t chosen;
    };
    void remember(Change change);

    std::vector<Clip> clips_;
    std::vector<Undo> undo_;
    std::uint64_t chosen_ = 0;
    std::uint64_t nextId_ = 1;
    std::uint64_t version_ = 0;
};

} // namespace app
