#include "tests/app/fakes.h"

using namespace app;
using Camera = EngineState::Camera;
using Mode = View::Mode;

namespace {

/// The pictures that are shown in the next frames of time.
std::vector<int> pictures(Evening& evening, int frames) {
    std::vector<int> result;
    for (int i = 0; i < frames; ++i) {
        evening.run(1);
        result.push_back(evening.engine.picture);
    }
    return result;
}

std::vector<int> from(int first, int last) {
    std::vector<int> result;
    for (int i = first; first < last ? i <= last : i >= last; i += first < last ? 1 : -1) {
        result.push_back(i);
    }
    return result;
}

std::vector<int> operator+(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace

TEST(Session, HoldsThePictureHoweverFarLiveGoesOn) {
    Evening evening;
    evening.run(100);
    EXPECT_EQ(evening.act(Command::hold), Outcome::done);
    const int held = evening.engine.picture;
    EXPECT_TRUE(evening.view().mode == Mode::held && evening.saw(Text::toldHeld));
    for (int i = 0; i < 20; ++i) { // the ring of 50 frames goes over it
        evening.run(10);
        ASSERT_EQ(evening.engine.picture, held);
    }
    EXPECT_EQ(evening.view().mode, Mode::replay);
    for (const int step : {-1, -1, 1, -10, 10, 10, 1}) {
        const int before = evening.engine.picture;
        EXPECT_EQ(evening.session->jog(step), Outcome::done);
        evening.run(1);
        EXPECT_EQ(evening.engine.picture, before + step);
    }
    EXPECT_EQ(evening.act(Command::end), Outcome::done);
    EXPECT_EQ(evening.act(Command::stepBack10), Outcome::done);
    EXPECT_EQ(evening.engine.pictureOf(evening.view().file, evening.view().frame), evening.engine.picture);
    EXPECT_EQ(evening.act(Command::home), Outcome::done);
    EXPECT_TRUE(evening.engine.picture == 0 && evening.act(Command::stepBack) == Outcome::told &&
                evening.saw(Text::toldAtStart));
    EXPECT_EQ(evening.act(Command::live), Outcome::done);
    EXPECT_TRUE(evening.view().mode == Mode::live && evening.act(Command::live) == Outcome::told);
    evening.engine.diskStands = true; // what the file does not have cannot be shown, but stays in view
    evening.run(60);
    evening.act(Command::hold);
    const int last = evening.engine.picture;
    evening.run(200);
    EXPECT_TRUE(evening.act(Command::stepBack) == Outcome::told && evening.saw(Text::toldFrameNotOnDisk));
    EXPECT_EQ(evening.engine.picture, last);
    evening.act(Command::live);
    for (const Command command : {Command::speed3, Command::speed9, Command::reverse, Command::playForward}) {
        EXPECT_EQ(evening.act(command), Outcome::told); // visibly nothing
        EXPECT_TRUE(evening.view().message.refused && evening.view().mode == Mode::live);
    }
}

TEST(Session, PlaysRangesExactly) {
    Evening evening([](Settings& settings) { settings.backToLive = false; });
    evening.run(500);
    evening.act(Command::hold);
    EXPECT_EQ(evening.session->scrubTo(100), Outcome::done);
    evening.act(Command::markIn);
    EXPECT_EQ(evening.session->scrubTo(104), Outcome::done);
    evening.act(Command::markOut);
    evening.act(Command::loop);
    evening.session->perform(Command::playClip);
    EXPECT_EQ(pictures(evening, 12), from(100, 104) + from(100, 104) + from(100, 101));
    evening.session->perform(Command::pingPong);
    EXPECT_EQ(pictures(evening, 9), from(102, 104) + from(104, 100) + from(100, 100));
    evening.session->perform(Command::playOnce);
    EXPECT_EQ(pictures(evening, 6), from(101, 104) + from(104, 104) + from(104, 104))
        << utf8(evening.message());
}

TEST(Session, ShowsTheLastSecondsAgainAndGoesBackToLive) {
    Evening evening;
    EXPECT_EQ(evening.session->perform(Command::again10), Outcome::told);
    evening.run(400);
    evening.session->perform(Command::again5);
    EXPECT_TRUE(evening.saw(Text::toldAgain) && evening.view().mode == Mode::replay);
    EXPECT_EQ(pictures(evening, 125), from(275, 399)); // 125 frames up to the newest
    evening.run(3);
    EXPECT_TRUE(evening.view().mode == Mode::live && evening.saw(Text::toldEndToLive));
    evening.session->perform(Command::again, L"60");
    EXPECT_TRUE(evening.saw(Text::toldAgainLess));
    evening.run(1);
    EXPECT_EQ(evening.engine.picture, 0);
    evening.session->perform(Command::speed9);
    EXPECT_EQ(pictures(evening, 3), (std::vector<int>{1, 5, 9}));
    evening.act(Command::hold);
    const int held = evening.engine.picture;
    evening.session->perform(Command::holdOrGoOn);
    EXPECT_EQ(pictures(evening, 2), (std::vector<int>{held, held + 4}));
    for (int i = 0; i < 400 && evening.view().mode != Mode::live; ++i) {
        evening.run(1);
    }
    EXPECT_EQ(evening.view().mode, Mode::live); // caught up
    evening.run(30);
    evening.session->perform(Command::playBackward);
    evening.run(1);
    const int first = evening.engine.picture;
    EXPECT_EQ(pictures(evening, 5), from(first - 1, first - 5));
    for (const double speed : {-2.0, -4.0}) {
        evening.act(Command::playBackward);
        EXPECT_EQ(evening.view().speed, speed);
    }
    EXPECT_EQ(evening.act(Command::playBackward), Outcome::told);
}

TEST(Session, RollsOnAndGoesBackOverTheBorder) {
    Evening evening;
    std::wstring file = evening.engine.recordFile();
    evening.run(1525); // a minute and a second
    EXPECT_NE(evening.engine.recordFile(), file);
    EXPECT_EQ(evening.view().recording, View::Recording::rolling);
    evening.run(30);
    EXPECT_EQ(evening.session->perform(Command::again5), Outcome::done);
    evening.run(1);
    EXPECT_EQ(evening.view().file, file);
    int last = evening.engine.picture;
    for (const int picture : pictures(evening, 120)) { // less the end of a file, which cannot be replayed
        EXPECT_TRUE(picture == last + 1 || (picture > last && picture <= last + 6 && last < 1525))
            << picture << " after " << last;
        last = picture;
    }
    EXPECT_GT(last, 1525);
    evening.run(40);
    evening.act(Command::hold);
    evening.run(2);
    for (int i = 0; i < 60; ++i) {
        const std::uint64_t before = *evening.view().line.position;
        EXPECT_EQ(evening.act(Command::stepBack), Outcome::done);
        EXPECT_EQ(evening.session->reel().moved(*evening.view().line.position, 1), before);
    }
    const int kept = evening.engine.picture;
    evening.run(1400); // no new file under somebody who looks
    EXPECT_EQ(evening.engine.picture, kept);
    evening.act(Command::live);
    for (int i = 0; i < 4; ++i) {
        evening.run(1500);
    }
    EXPECT_FALSE(evening.disk.exists(file));
    EXPECT_EQ(evening.disk.files(folderOf(file)).size(), 2u);
    EXPECT_GE(evening.view().line.whole->length(), 1500u);
    evening.engine.now.camera = Camera::gone; // a night without a camera uses nothing up
    file = evening.engine.recordFile();
    evening.run(5000);
    EXPECT_EQ(evening.engine.recordFile(), file);
}

TEST(Session, RecordsIntoNewFilesAndStopsOnlyWhenAskedTwice) {
    Evening evening;
    evening.run(50);
    evening.disk.content[L"C:\\rec\\2026-11-21 19-30-02.avi"] = "yesterday's";
    evening.act(Command::hold);
    const int held = evening.engine.picture;
    EXPECT_EQ(evening.act(Command::record), Outcome::done);
    const std::wstring file = evening.engine.recordFile();
    EXPECT_EQ(file, L"C:\\rec\\2026-11-21 19-30-02 (2).avi");
    EXPECT_TRUE(evening.view().recording == View::Recording::recording && evening.saw(Text::toldRecording));
    EXPECT_TRUE(evening.engine.picture == held && evening.view().held); // what was there stays in view
    evening.run(100);
    EXPECT_TRUE(evening.act(Command::record) == Outcome::told && evening.saw(Text::toldRecordingAlready) &&
                evening.engine.recordFile() == file);
    EXPECT_TRUE(evening.act(Command::stop) == Outcome::told && evening.view().question);
    evening.act(Command::stepBack); // anything else is a no
    EXPECT_TRUE(!evening.view().question && evening.act(Command::confirm) == Outcome::told);
    evening.act(Command::stop);
    evening.run(80); // too late
    EXPECT_FALSE(evening.view().question);
    evening.act(Command::quit);
    EXPECT_TRUE(evening.view().question && !evening.view().quit);
    evening.act(Command::dismiss);
    EXPECT_TRUE(evening.engine.faults.empty() && evening.engine.recordFile() == file);
    evening.act(Command::stop);
    evening.engine.stopsAllowed = 1;
    EXPECT_EQ(evening.act(Command::stop), Outcome::done);
    EXPECT_TRUE(evening.saw(Text::toldStopped)) << utf8(evening.message());
    EXPECT_TRUE(evening.view().recording == View::Recording::rolling && evening.engine.faults.empty());
    EXPECT_EQ(evening.act(Command::stop), Outcome::told);
    EXPECT_EQ(evening.disk.content[L"C:\\rec\\2026-11-21 19-30-02.avi"], "yesterday's");
    evening.act(Command::record);
    evening.disk.content.erase(evening.engine.recordFile()); // by another program
    evening.act(Command::stop);
    evening.engine.stopsAllowed = 1;
    evening.act(Command::stop);
    EXPECT_TRUE(evening.saw(Text::toldStoppedGone)) << utf8(evening.message());
    evening.act(Command::quit);
    evening.act(Command::quit);
    EXPECT_TRUE(evening.view().quit);
}

TEST(Session, TellsOfARecordingThatFails) {
    Evening evening;
    evening.run(20);
    evening.disk.refused = {L"C:\\rec"};
    EXPECT_TRUE(evening.act(Command::record) == Outcome::told &&
                evening.message().find(L"refused") != std::wstring::npos);
    EXPECT_EQ(evening.view().recording, View::Recording::rolling);
    evening.disk.refused.clear();
    evening.engine.refuseRecord = true;
    EXPECT_EQ(evening.act(Command::record), Outcome::told);
    EXPECT_TRUE(evening.view().recording == View::Recording::off &&
                evening.view().alarms[0].text.find(L"write-protected") != std::wstring::npos);
    evening.run(20);
    evening.act(Command::hold); // memory alone
    const int held = evening.engine.picture;
    EXPECT_TRUE(evening.act(Command::stepBack) == Outcome::done && evening.engine.picture == held - 1);
    EXPECT_EQ(evening.act(Command::clipOfLast10), Outcome::done);
    EXPECT_TRUE(evening.act(Command::playForward) == Outcome::told && evening.saw(Text::toldFrameNotOnDisk));
    evening.engine.refuseRecord = false;
    evening.act(Command::live);
    evening.run(260); // tried again by itself
    EXPECT_EQ(evening.view().recording, View::Recording::rolling);
    evening.act(Command::record);
    evening.engine.now.recording.failing = true;
    evening.engine.now.recording.error = L"Disk full (112)";
    evening.disk.free = 144512ull * 25 * 599;
    evening.run(60);
    EXPECT_TRUE(evening.view().recording == View::Recording::failing && evening.view().driveLow);
    EXPECT_TRUE(evening.view().alarms.size() == 2 &&
                evening.view().alarms[0].weight == View::Alarm::Weight::recording);
    EXPECT_NE(evening.view().alarms[0].text.find(L"Disk full (112). Safe on disk: 2."), std::wstring::npos)
        << utf8(evening.view().alarms[0].text);
    evening.disk.free *= 2;
    evening.engine.now.recording.on = false; // it ends by itself
    evening.run(60);
    EXPECT_TRUE(evening.view().alarms[0].text.find(L"ended by itself") != std::wstring::npos &&
                !evening.view().driveLow);
    EXPECT_EQ(evening.act(Command::record), Outcome::done);
    EXPECT_TRUE(evening.view().alarms.empty() && evening.view().recording == View::Recording::recording);
}

TEST(Session, KeepsGoingWithoutItsCamera) {
    Evening evening(nullptr, false);
    EXPECT_TRUE(evening.view().mode == Mode::noCamera && evening.saw(Text::toldNoCamera));
    for (const Command command : {Command::live, Command::record, Command::stepBack, Command::again5,
                                  Command::playForward, Command::markIn}) {
        EXPECT_EQ(evening.act(command), Outcome::told);
    }
    EXPECT_EQ(evening.session->open(evening.oldFile(L"C:\\o.avi", 60, 500)), Outcome::done);
    EXPECT_TRUE(evening.view().mode == Mode::oldRecording && evening.view().source == L"OLD RECORDING o.avi");
    evening.session->perform(Command::playForward);
    EXPECT_EQ(pictures(evening, 62), from(500, 558) + std::vector<int>(3, 558)); // its end: held
    EXPECT_TRUE(evening.view().held && evening.act(Command::stepForward) == Outcome::told);
    evening.engine.hasCamera = true;
    EXPECT_TRUE(evening.act(Command::lookForCamera) == Outcome::done && evening.view().mode == Mode::live);
    evening.run(50);
    evening.act(Command::record);
    const std::wstring file = evening.engine.recordFile();
    evening.run(50);
    evening.engine.now.camera = Camera::gone;
    evening.engine.now.cameraSince_ms = 240;
    evening.run(100);
    EXPECT_TRUE(evening.view().mode == Mode::noSignal && evening.view().noSignal_ms == 4240 - 40)
        << evening.view().noSignal_ms;
    EXPECT_EQ(evening.view().alarms.back().text, L"NO SIGNAL since 19:30:06 (4.2 s)")
        << utf8(evening.view().alarms.back().text);
    EXPECT_TRUE(evening.act(Command::lookForCamera) == Outcome::told &&
                evening.act(Command::stepBack) == Outcome::done);
    evening.act(Command::live);
    evening.engine.now.camera = Camera::live;
    evening.run(10);
    EXPECT_TRUE(evening.view().noSignalText.empty() && evening.engine.recordFile() == file);
    ASSERT_EQ(evening.view().line.gaps.size(), 1u);
    const View::GapMark gap = evening.view().line.gaps[0];
    const Reel& reel = evening.session->reel();
    EXPECT_GT(reel.timeOfDay_ms(gap.before) - reel.timeOfDay_ms(gap.before - 1), 4000);
    evening.engine.now.camera = Camera::changed;
    evening.run(5);
    EXPECT_TRUE(evening.view().recording == View::Recording::recording &&
                evening.engine.recordFile() != file && evening.engine.faults.empty());
    EXPECT_NE(evening.message().find(L"another format"), std::wstring::npos);
    evening.engine.now.camera = Camera::changed;
    evening.engine.hasCamera = false;
    evening.run(5);
    EXPECT_EQ(evening.view().mode, Mode::noCamera);
    EXPECT_TRUE(evening.session->scrubTo(30) == Outcome::done &&
                evening.view().mode == Mode::replay); // still there
    evening.engine.hasCamera = true;
    evening.run(300);
    EXPECT_EQ(evening.view().recording, View::Recording::recording);
}

TEST(Session, SaysWhoseMaterialItShows) {
    Evening evening;
    evening.run(100);
    EXPECT_EQ(evening.session->open(L"C:\\none.avi"), Outcome::told);
    EXPECT_EQ(evening.message(), L"Nothing was opened: there is no such file.");
    EXPECT_EQ(evening.session->open(evening.oldFile(L"C:\\one.avi", 1, 0)), Outcome::told);
    evening.recordings.frameBytes = 120000;
    EXPECT_EQ(evening.session->open(evening.oldFile(L"C:\\o.avi", 40, -100)), Outcome::told);
    evening.recordings.frameBytes = 144000;
    evening.disk.content[L"C:\\o.avi.clips"] =
        "marvo clips 1: o.avi\n3\t9\t-\tx\nnonsense\n50\t60\t-\tbehind the end\n";
    EXPECT_TRUE(evening.session->open(L"C:\\o.avi") == Outcome::done &&
                evening.message().find(L"Line 3 ") == 0 &&
                evening.message().find(L"(and 1 more)") != std::wstring::npos);
    EXPECT_TRUE(evening.view().clips.size() == 2 && evening.view().clips[1].gone &&
                !evening.view().line.liveEdge);
    EXPECT_TRUE(evening.act(Command::playClip, L"2") == Outcome::told &&
                evening.act(Command::playClip, L"3") == Outcome::told);
    EXPECT_EQ(evening.act(Command::playClip, L"1"), Outcome::done);
    EXPECT_TRUE(evening.view().clips[0].playing && evening.view().mode == Mode::oldRecording);
    evening.act(Command::record); // goes on showing it
    EXPECT_TRUE(evening.view().mode == Mode::oldRecording &&
                evening.view().recording == View::Recording::recording);
    evening.run(20);
    EXPECT_TRUE(evening.engine.picture == -100 + 9 && evening.view().held)
        << evening.engine.picture; // an old one does not go live
    EXPECT_EQ(evening.act(Command::deleteClip), Outcome::done);
    EXPECT_EQ(evening.disk.content[L"C:\\o.avi.clips"].find("\nnonsense\n") != std::string::npos, true);
    const std::string others = "marvo clips 1: other.avi\n1\t2\t-\tx\n"; // is never written over
    evening.disk.content[L"C:\\o.avi.clips"] = others;
    EXPECT_EQ(evening.session->open(evening.session->settings().recent[0]), Outcome::done);
    EXPECT_TRUE(evening.act(Command::clipOfLast10) == Outcome::done && !evening.view().alarms.empty());
    EXPECT_EQ(evening.disk.content[L"C:\\o.avi.clips"], others);
    EXPECT_EQ(evening.view().alarms[0].text.find(L".."), std::wstring::npos);
    EXPECT_EQ(evening.session->open(evening.engine.recordFile()), Outcome::done);
    EXPECT_TRUE(evening.saw(Text::toldOfThisEvening));
    EXPECT_TRUE(evening.view().mode != Mode::oldRecording && evening.view().clips.empty());
    EXPECT_EQ(evening.session->describe(*evening.view().line.position).substr(12), L"  01:02:03:04");
    EXPECT_TRUE(evening.session->pictureAt(*evening.view().line.liveEdge)->inRing &&
                !evening.session->pictureAt(5)->inRing);
    EXPECT_FALSE(evening.session->pictureAt(100000));
}

TEST(Session, KeepsClipsOnDisk) {
    Evening evening;
    evening.run(200);
    EXPECT_TRUE(evening.act(Command::markOut) == Outcome::told &&
                evening.act(Command::nextClip) == Outcome::told &&
                evening.act(Command::exportAll) == Outcome::told);
    evening.act(Command::markIn);
    const std::wstring rolling = evening.engine.recordFile();
    evening.act(Command::record);
    const std::wstring file = evening.engine.recordFile();
    evening.run(50);
    EXPECT_EQ(evening.act(Command::markOut), Outcome::done); // over the border: two clips
    EXPECT_TRUE(evening.view().clips.size() == 2 && evening.view().clips[0].clip.file == rolling &&
                evening.view().clips[1].clip.file == file);
    EXPECT_EQ(evening.disk.content[file + L".clips"],
              "marvo clips 1: 2026-11-21 19-30-08.avi\n0\t50\t2026-11-21 19:30:08.160\tClip 2\n")
        << evening.disk.content[file + L".clips"];
    EXPECT_TRUE(evening.disk.exists(rolling + L".clips"));
    evening.act(Command::clipOfLast10);
    evening.act(Command::renameClip, L"Tor");
    evening.act(Command::clipUp);
    EXPECT_TRUE(evening.view().clips.back().clip.name == L"Clip 4" || evening.view().clips.size() >= 3);
    const std::string saved = evening.disk.content[file + L".clips"];
    evening.disk.refused = {file + L".clips"};
    evening.act(Command::deleteClip);
    ASSERT_FALSE(evening.view().alarms.empty());
    EXPECT_TRUE(evening.view().alarms[0].text.find(L"not saved: refused") != std::wstring::npos &&
                evening.disk.content[file + L".clips"] == saved);
    evening.disk.refused.clear();
    evening.run(260); // tried again
    EXPECT_TRUE(evening.view().alarms.empty() && evening.disk.content[file + L".clips"] != saved);
    EXPECT_TRUE(evening.act(Command::undo) == Outcome::done &&
                evening.disk.content[file + L".clips"] == saved);
    while (evening.act(Command::undo) == Outcome::done) {
    }
    EXPECT_TRUE(evening.view().clips.empty() && !evening.disk.exists(file + L".clips") &&
                !evening.disk.exists(rolling + L".clips"));
}

TEST(Session, MarksTheFirstFrameOfARecordingThatHasNoneYet) {
    Evening evening;
    evening.run(100);
    evening.session->perform(Command::record);
    evening.session->tick(evening.now);
    EXPECT_EQ(evening.session->perform(Command::markIn), Outcome::done);
    evening.run(20);
    EXPECT_EQ(evening.act(Command::markOut), Outcome::done);
    const std::vector<View::ClipRow> clips = evening.view().clips;
    ASSERT_EQ(clips.size(), 1u);
    EXPECT_TRUE(clips[0].clip.file == evening.engine.recordFile() && clips[0].clip.frames.first == 0);
}

TEST(Session, PlaysAllClips) {
    Evening evening;
    evening.run(300);
    evening.act(Command::hold);
    for (const std::uint64_t first : {50u, 200u, 100u}) {
        evening.session->scrubTo(first);
        evening.act(Command::markIn);
        evening.session->scrubTo(first + 2);
        evening.act(Command::markOut);
    }
    evening.session->perform(Command::playAll);
    const std::vector<int> shown = pictures(evening, 12);
    for (const int picture : {50, 51, 52, 200, 201, 202, 100, 101, 102}) {
        EXPECT_NE(std::find(shown.begin(), shown.end(), picture), shown.end()) << picture;
    }
    EXPECT_TRUE(std::all_of(shown.begin(), shown.end() - 3, [](int picture) { return picture < 300; }));
    evening.run(3);
    EXPECT_EQ(evening.view().mode, Mode::live);
    evening.act(Command::loop);
    evening.session->perform(Command::playAll);
    evening.run(1);
    EXPECT_EQ(evening.view().source, L"CLIP 1 of 3: Clip 1");
    evening.act(Command::nextClip);
    EXPECT_EQ(evening.view().source, L"CLIP 2 of 3: Clip 2");
    evening.run(40);
    EXPECT_EQ(evening.view().mode, Mode::playlist); // round and round
    evening.act(Command::stepBack);
    EXPECT_TRUE(evening.view().mode == Mode::replay && evening.view().held);
}

TEST(Session, DoesWhatTheMouseAsks) {
    Evening evening;
    evening.run(300);
    EXPECT_EQ(evening.session->shuttle(1), Outcome::told);
    for (const double speed : {-0.1, -0.2, 0.0, 0.2}) {
        EXPECT_EQ(evening.session->shuttle(speed < 0 ? -1 : speed == 0 ? 2 : 2), Outcome::done);
        EXPECT_TRUE(evening.view().held == (speed == 0) && (speed == 0 || evening.view().speed == speed))
            << speed;
    }
    EXPECT_TRUE(evening.session->shuttle(99) == Outcome::done && evening.view().speed == 4 &&
                evening.session->shuttle(1) == Outcome::told);
    EXPECT_TRUE(evening.act(Command::field) == Outcome::told && evening.act(Command::hold) == Outcome::done &&
                evening.act(Command::field) == Outcome::done);
    EXPECT_EQ(evening.view().field, Field::first);
    EXPECT_EQ(evening.act(Command::goTo, L"77"), Outcome::done);
    EXPECT_TRUE(evening.engine.picture == 77 && evening.view().field == Field::first);
    for (const wchar_t* bad : {L"", L"x", L"-1", L"1.5", L"1e300", L"nan"}) {
        EXPECT_EQ(evening.act(Command::goTo, bad), Outcome::told) << utf8(bad);
        EXPECT_EQ(evening.act(Command::again, bad),
                  *bad == L'1' && bad[1] == L'.' ? Outcome::done : Outcome::told)
            << utf8(bad);
    }
    EXPECT_EQ(evening.act(Command::speed, L"-0,33"), Outcome::done);
    EXPECT_TRUE(evening.view().speed == -0.33 && evening.view().speedText == L"-0.33 x");
    EXPECT_TRUE(evening.act(Command::mute) == Outcome::done && !evening.view().mute);
    EXPECT_TRUE(evening.session->perform(Command::help) == Outcome::window && evening.message().empty());
    Settings german = evening.session->settings();
    german.language = Language::german;
    evening.session->apply(german);
    EXPECT_EQ(evening.act(Command::dismiss), Outcome::window);
    EXPECT_TRUE(evening.act(Command::stop) == Outcome::told && evening.message().find(L"Es l") == 0);
    EXPECT_TRUE(evening.act(Command::dismiss) == Outcome::done && evening.message().empty());
}
