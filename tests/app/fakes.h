/// @file
/// An engine, a disk and an evening that need no window and no time.
#pragma once

#include "app/clip_file.h"
#include "app/session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>

/// Files in memory. Recordings are in here by their name alone; their pictures are the engine's.
class FakeDisk : public app::Disk {
public:
    std::map<std::wstring, std::string> content;
    std::set<std::wstring> refused; ///< paths that can be neither written nor made
    std::uint64_t free = 1ull << 40;
    int writes = 0;

    bool exists(const std::wstring& name) override { return content.count(name) != 0; }
    bool read(const std::wstring& name, std::string& text, std::wstring& why) override {
        text = exists(name) ? content[name] : "";
        return check(name, why);
    }
    bool replace(const std::wstring& name, const std::string& text, std::wstring& why) override {
        if (!check(name, why)) {
            return false;
        }
        content[name] = text;
        ++writes;
        return true;
    }
    bool remove(const std::wstring& name, std::wstring& why) override {
        return check(name, why) && content.erase(name) != 0;
    }
    bool makeFolder(const std::wstring& name, std::wstring& why) override { return check(name, why); }
    std::vector<std::wstring> files(const std::wstring& folder) override {
        std::vector<std::wstring> names;
        for (const auto& [name, text] : content) {
            if (app::folderOf(name) == folder) {
                names.push_back(app::nameOf(name));
            }
        }
        return names;
    }
    std::optional<std::uint64_t> freeBytes(const std::wstring&) override { return free; }

private:
    bool check(const std::wstring& name, std::wstring& why) {
        why = refused.count(name) ? L"refused" : L"";
        return why.empty();
    }
};

/// Does what the engine does: numbers from 0 with every recording, a ring, a range that is cut to the file
/// less its last frame, positions that run on one tick ahead of the picture. Every captured picture is one
/// of a kind, so that a test sees which one is shown.
class FakeEngine : public app::Engine {
public:
    explicit FakeEngine(FakeDisk& disk) : disk_(disk) {}

    std::map<std::wstring, std::vector<int>> files; ///< the pictures of each recording
    app::EngineState now;
    bool hasCamera = true;
    bool refuseRecord = false;
    bool diskStands = false; ///< nothing is written
    int stopsAllowed = 0;    ///< more stops than this are a fault
    std::vector<std::string> faults;
    int calls = 0;
    int picture = -1; ///< the one that is shown

    void tick() {
        if (now.built && now.camera == app::EngineState::Camera::live) {
            captured_.push_back(nextPicture_++);
            now.captured = captured_.size();
        }
        write(backlog);
        show();
    }

    bool start() override {
        ++calls;
        stop();
        if (!hasCamera) {
            return fail(L"");
        }
        now = {};
        now.built = playing_ = true;
        now.camera = app::EngineState::Camera::live;
        now.frameBytes = 144000;
        now.frameDuration_100ns = 400000;
        now.ringFrames = 50;
        captured_.clear();
        recordFile_.clear();
        live_ = true;
        paused_ = false;
        return true;
    }
    void stop() override {
        now = {};
        playing_ = false;
    }
    bool live() override {
        ++calls;
        live_ = true;
        paused_ = false;
        speed_ = 1;
        position_ = static_cast<double>(now.captured);
        return now.built;
    }
    bool pause() override { return set(paused_, true); }
    bool resume() override { return set(paused_, false); }
    std::optional<app::FrameSpan> replay(const std::wstring& file, app::FrameSpan range,
                                         std::uint64_t at) override {
        ++calls;
        const auto found = files.find(file);
        if (found == files.end() || found->second.size() < 2) {
            fail(L"no such file");
            return std::nullopt;
        }
        playFile_ = file;
        const std::uint64_t last = found->second.size() - 2;
        range_ = {std::min(range.first, last), std::min(range.last, last)};
        live_ = false;
        paused_ = true;
        speed_ = 1;
        playing_ = true;
        position_ = static_cast<double>(std::clamp(at, range_.first, range_.last));
        return range_;
    }
    bool setSpeed(double speed) override { return set(speed_, speed); }
    bool seek(std::uint64_t frame) override {
        return set(position_, static_cast<double>(live_ ? frame : wrapped(static_cast<double>(frame))));
    }
    bool startRecord(const std::wstring& file) override {
        ++calls;
        if (disk_.exists(file)) {
            faults.push_back("recorded over a file");
        }
        if (now.recording.on && recordFile_.find(L"rolling") == recordFile_.npos) {
            faults.push_back("ended a recording by another");
        }
        live();
        write(0);
        now.recording = {};
        if (refuseRecord) {
            return fail(L"write-protected");
        }
        recordFile_ = file;
        disk_.content[file] = "";
        files[file].clear();
        now.recording.on = true;
        captured_.clear();
        now.captured = 0;
        position_ = 0;
        return true;
    }
    void stopRecord() override {
        ++calls;
        if (--stopsAllowed < 0) {
            faults.push_back("stopped without a question");
        }
        write(0);
        now.recording.on = false;
        now.recording.complete = true;
    }
    bool call(const std::string&) override { return ++calls, true; }
    void log(const std::wstring&) override {}
    app::EngineState state() override { return now; }
    std::wstring explanation() const override { return explanation_; }
    /// The recording that runs.
    const std::wstring& recordFile() const { return recordFile_; }
    /// The picture of a frame; frames that are in no file have it from the ring's numbers.
    int pictureOf(const std::wstring& file, std::uint64_t frame) {
        return file.empty() || file == recordFile_ ? captured_.at(frame) : files[file].at(frame);
    }

    std::size_t backlog = 3; ///< frames that are captured and not yet written

private:
    template <class Value>
    bool set(Value& target, Value value) {
        ++calls;
        target = value;
        return true;
    }
    bool fail(const wchar_t* why) {
        explanation_ = why;
        return false;
    }
    std::uint64_t wrapped(double position) const {
        const auto length = static_cast<std::int64_t>(range_.length());
        const auto offset =
            static_cast<std::int64_t>(std::floor(position)) - static_cast<std::int64_t>(range_.first);
        return range_.first + static_cast<std::uint64_t>((offset % length + length) % length);
    }
    void write(std::size_t left) {
        const std::size_t wanted = now.captured - std::min<std::size_t>(now.captured, left);
        while (now.recording.on && !diskStands && now.recording.written < wanted) {
            files[recordFile_].push_back(captured_[now.recording.written++]);
        }
    }
    void show() {
        if (!playing_) {
            return;
        }
        if (live_ && !paused_ && static_cast<double>(now.captured) > position_ + 4) {
            position_ += 1;
        }
        const std::uint64_t due = live_ ? static_cast<std::uint64_t>(position_) : wrapped(position_);
        const bool ring = due < now.captured && due + now.ringFrames >= now.captured;
        if (ring && (live_ || playFile_ == recordFile_)) {
            picture = captured_[due];
        } else if (!live_ && due < files[playFile_].size()) {
            picture = files[playFile_][due];
        } else {
            return;
        }
        now.shown = due;
        position_ += paused_ ? 0 : speed_;
    }

    FakeDisk& disk_;
    std::wstring explanation_;
    std::wstring recordFile_;
    std::wstring playFile_;
    app::FrameSpan range_;
    std::vector<int> captured_;
    int nextPicture_ = 0;
    bool playing_ = false;
    bool live_ = true;
    bool paused_ = false;
    double speed_ = 1;
    double position_ = 0;
};

/// Knows the fake engine's files.
class FakeRecordings : public app::Recordings {
public:
    explicit FakeRecordings(FakeEngine& engine) : engine_(engine) {}
    unsigned long frameBytes = 144000;

    std::optional<app::RecordingFacts> look(const std::wstring& file, std::wstring& why) override {
        const auto found = engine_.files.find(file);
        why = L"there is no such file";
        return found == engine_.files.end() ? std::nullopt
                                            : std::optional(app::RecordingFacts{
                                                  found->second.size(), frameBytes, 400000, std::nullopt});
    }
    std::wstring timeCode(const std::wstring&, std::uint64_t) override { return L"01:02:03:04"; }

private:
    FakeEngine& engine_;
};

/// A session with all that it needs, on the evening of 2026-11-21 at 19:30.
class Evening {
public:
    static constexpr wchar_t folder[] = L"C:\\rec";
    FakeDisk disk;
    FakeEngine engine{disk};
    FakeRecordings recordings{engine};
    app::Moment now{1000, app::timeOfDay_ms({2026, 11, 21, 19, 30, 0, 0})};
    std::unique_ptr<app::Session> session;

    explicit Evening(void (*change)(app::Settings&) = nullptr, bool camera = true) {
        app::Settings settings;
        settings.folder = folder;
        settings.rolling_min = 1;
        if (change) {
            change(settings);
        }
        engine.hasCamera = camera;
        session = std::make_unique<app::Session>(engine, disk, recordings, settings);
        session->start(now);
    }

    /// Frames of 40 ms go by; the drain tells of each.
    void run(int frames) {
        for (int i = 0; i < frames; ++i) {
            engine.tick();
            now.steady_ms += 40;
            now.timeOfDay_ms += 40;
            session->shown(engine.now.shown);
            session->tick(now);
        }
    }
    /// A command, and the picture that comes of it.
    app::Outcome act(app::Command command, const std::wstring& argument = {}) {
        const app::Outcome outcome = session->perform(command, argument);
        run(1);
        return outcome;
    }
    /// A recording of so many frames, as of another evening.
    std::wstring oldFile(const std::wstring& name, int frames, int firstPicture) {
        std::vector<int>& pictures = engine.files[name];
        for (int i = 0; i < frames; ++i) {
            pictures.push_back(firstPicture + i);
        }
        disk.content[name] = "";
        return name;
    }
    const app::View& view() const { return session->view(); }
    std::wstring message() const { return view().message.text; }
    /// Whether the message is that text, whatever stands in its places.
    bool saw(app::Text text) const {
        std::wstring rest = message();
        std::wstring pattern = app::text(text, app::Language::english);
        for (std::size_t place = 0; place != pattern.npos; pattern.erase(0, place + 3)) {
            place = pattern.find(L'{');
            const std::size_t found = rest.find(pattern.substr(0, place));
            if (found == rest.npos) {
                return false;
            }
            rest.erase(0, found + std::min(place, pattern.size()));
            if (place == pattern.npos) {
                break;
            }
        }
        return true;
    }
};
