#include "app/jobs.h"
#include "app/key_map.h"
#include "app/output_place.h"
#include "app/recording_name.h"
#include "app/rolling_file.h"
#include "app/timeline.h"
#include "tests/app/fakes.h"

#include <atomic>

using namespace app;

namespace {

std::vector<std::wstring> places(const wchar_t* text) {
    std::vector<std::wstring> found;
    for (std::wstring rest = text; rest.find(L'{') != rest.npos; rest = rest.substr(rest.find(L'}') + 1)) {
        found.push_back(rest.substr(rest.find(L'{'), 3));
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

TEST(Texts, AreThereInBothLanguagesWithTheSamePlaces) {
    for (int id = 0; id < static_cast<int>(Text::count); ++id) {
        const wchar_t* const english = text(static_cast<Text>(id), Language::english);
        const wchar_t* const german = text(static_cast<Text>(id), Language::german);
        EXPECT_TRUE(*english && *german) << id;
        EXPECT_EQ(places(english), places(german)) << utf8(english);
        EXPECT_TRUE(std::wstring(english).find(L'\xfffd') == std::wstring::npos);
    }
    EXPECT_EQ(text(Text::toldClip, Language::german, {L"{1}", L"b", L"c"}), L"{1}: b, ab c.");
    EXPECT_EQ(utf8(wide("a\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\xa5")), "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\xa5");
    EXPECT_EQ(utf8(wide("\xff-\xc0\x80-\xed\xa0\x80-\xe2\x82")).find("\xef\xbf\xbd-"), 0u);
    EXPECT_EQ(durationText(59949, Language::german) + durationText(3599499, Language::english),
              L"59,9 s59:59 min");
    EXPECT_EQ(durationText(3600000, Language::english), L"1:00:00 h");
    EXPECT_EQ(numberText(-0.33, Language::german) + numberText(2, Language::english), L"-0,332");
    const Calendar day{2028, 2, 29, 23, 59, 58, 7};
    EXPECT_EQ(timeOfDayText(timeOfDay_ms(day), true), L"23:59:58.007");
    EXPECT_EQ(calendarOf(timeOfDay_ms(day)).day, 29);
}

TEST(Commands, HaveNumbersNamesAndKeysOfTheirOwn) {
    std::set<std::string> names;
    std::vector<std::wstring> keys;
    int last = 0;
    for (const CommandInfo& row : commands()) {
        EXPECT_GT(static_cast<int>(row.command), last) << row.name;
        last = static_cast<int>(row.command);
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_TRUE(commandOf(row.name) == row.command && commandOf(std::to_string(last)) == row.command);
        for (const Key& key : KeyMap().keys(row.command)) {
            keys.push_back(key.text());
            EXPECT_TRUE(KeyMap().find(key, false) == row.command && Key::read(key.text()) == key) << row.name;
            EXPECT_EQ(KeyMap().find(key, true).has_value(), std::string(row.name).find("step") == 0)
                << row.name;
        }
        EXPECT_EQ(KeyMap().text(row.command).empty(), *row.keys == 0) << row.name;
    }
    std::sort(keys.begin(), keys.end());
    EXPECT_TRUE(std::adjacent_find(keys.begin(), keys.end()) == keys.end());
    EXPECT_FALSE(commandOf("") || commandOf("12x") || commandOf("999") || commandOf("Record"));
}

TEST(KeyMap, TakesOtherKeysAndTellsOfConflicts) {
    KeyMap map;
    std::wstring why;
    EXPECT_TRUE(map.set(Command::record, L"ctrl+alt+f24  num5 CTRL+ALT+F24", Language::english, why) ==
                false);
    EXPECT_EQ(why, L"the key Num5 belongs to \"Speed 0.5\".");
    EXPECT_TRUE(map.set(Command::record, L"ctrl+alt+f24 Insert", Language::english, why));
    EXPECT_EQ(map.text(Command::record), L"Ctrl+Alt+F24 Insert");
    EXPECT_TRUE(map.changed(Command::record) && !map.changed(Command::stop));
    EXPECT_FALSE(map.find({'R'}, false) || map.find({0x2d, true}, false));
    EXPECT_TRUE(map.set(Command::stop, L"R", Language::english, why) &&
                map.set(Command::stop, L"", Language::english, why));
    for (const wchar_t* bad :
         {L"Ctrl+", L"Ctrl+Ctrl+A", L"Hyper+A", L"+", L"F25", L"Num10", L"AB", L"\xe4"}) {
        EXPECT_FALSE(map.set(Command::open, bad, Language::english, why)) << utf8(bad);
        EXPECT_FALSE(map.changed(Command::open));
    }
}

TEST(Timeline, TurnsPlacesIntoPixelsAndBack) {
    Timeline line;
    line.setWhole({100, 1099});
    line.setWidth(500);
    EXPECT_TRUE(line.x(100) == 0 && line.x(1100) == 500 && line.place(0) == 100 && line.place(499) == 1098);
    EXPECT_TRUE(line.place(-50) == 100 && line.place(9999) == 1099 && line.hits(251, 600, 1) &&
                !line.hits(252, 600, 1));
    line.zoom(0.1, 250);
    EXPECT_EQ(line.shown(), (FrameSpan{550, 649}));
    for (std::uint64_t place = 550; place < 650; ++place) {
        EXPECT_EQ(line.place(line.x(place)), place);
    }
    line.scroll(-100000);
    EXPECT_EQ(line.shown().first, 100u);
    line.reveal(1099);
    EXPECT_EQ(line.shown(), (FrameSpan{1000, 1099}));
    line.setWhole({100, 1199}); // grows: the view at its end follows, one elsewhere stays
    EXPECT_EQ(line.shown(), (FrameSpan{1100, 1199}));
    line.reveal(300);
    const FrameSpan stays = line.shown();
    line.setWhole({150, 1299});
    EXPECT_EQ(line.shown(), stays);
    line.zoom(1e-9, 0);
    EXPECT_EQ(line.shown().length(), 10u);
    line.zoom(1e9, 3);
    EXPECT_TRUE(!line.zoomed() && line.shown() == line.whole());
    line.setWhole({7, 7});
    line.setWidth(0);
    EXPECT_TRUE(line.place(0) == 7 && line.shown() == (FrameSpan{7, 7}));
}

TEST(Reel, GoesOnOverTheBordersOfFiles) {
    Reel reel;
    EXPECT_TRUE(reel.empty() && !reel.find(0));
    const auto add = [&reel](const wchar_t* file, std::uint64_t frames, std::uint64_t firstFrame) {
        Segment segment;
        segment.file = file;
        segment.firstFrame = firstFrame;
        segment.growing = true;
        segment.startedAt_ms = 1'000'000;
        reel.add(segment);
        reel.grow(frames);
    };
    add(L"a", 10, 0);
    reel.close(8); // places 8 and 9 are nobody's
    add(L"none", 0, 0);
    add(L"b", 5, 100);
    reel.grow(3);
    EXPECT_EQ(reel.span(), (FrameSpan{0, 14}));
    EXPECT_TRUE(reel.find(7) == (Place{0, 7}) && !reel.find(8) && reel.find(10) == (Place{2, 100}) &&
                !reel.find(15));
    EXPECT_TRUE(reel.placeOf(L"B", 104) == 14u && !reel.placeOf(L"b", 99) && !reel.placeOf(L"b", 105));
    EXPECT_TRUE(reel.moved(7, 1) == 10 && reel.moved(10, -1) == 7 && reel.moved(5, 5) == 12 &&
                reel.moved(12, -5) == 5);
    EXPECT_TRUE(reel.moved(3, -9) == 0 && reel.moved(13, 99) == 14 && reel.nearest(8) == 7 &&
                reel.nearest(99) == 14);
    reel.addGap({12, 5000});
    EXPECT_TRUE(reel.timeOfDay_ms(11) == 1'000'040 && reel.timeOfDay_ms(12) == 1'005'080 &&
                reel.timeOfDay_ms(3) == 1'000'120);
    reel.recycle(L"A");
    EXPECT_TRUE(reel.span() == (FrameSpan{10, 14}) && reel.moved(12, -9) == 10 && !reel.find(3) &&
                reel.nearest(0) == 10);
}

TEST(Clips, ChangeAndComeBack) {
    ClipList list;
    const std::uint64_t first = list.add({0, L"one", L"f", {1, 2}, 0, 400000}).id;
    const std::uint64_t second = list.add({0, L"two", L"f", {3, 4}, 0, 400000}).id;
    list.add({0, L"Clip 4", L"f", {5, 6}, 0, 400000});
    EXPECT_EQ(list.freshName(Language::english), L"Clip 5");
    EXPECT_TRUE(list.move(first, 9) && !list.move(first, 1) && list.position(first) == 2u &&
                list.position(second) == 0u);
    EXPECT_TRUE(list.rename(second, L"a\nb") && !list.rename(second, L"a b") && !list.rename(second, L" "));
    EXPECT_TRUE(list.choose(second) && !list.choose(77) && !list.chooseNext(-1) && list.chooseNext(1) &&
                list.choose(second));
    EXPECT_TRUE(list.remove(second) && !list.remove(second) && list.chosen()->name == L"Clip 4");
    using Change = ClipList::Change;
    for (const Change change : {Change::removed, Change::renamed, Change::moved, Change::added}) {
        EXPECT_EQ(list.undo(), change);
    }
    EXPECT_TRUE(list.clips().size() == 2 && list.clips()[0].id == first && list.clips()[1].name == L"two");
    EXPECT_NE(list.add({}).id, second + 1); // an id is never used again
}

TEST(ClipFile, KeepsEveryLine) {
    const std::int64_t time = timeOfDay_ms({2026, 11, 21, 19, 30, 0, 480});
    const std::vector<Clip> clips = {{0, L"Tor \xe4\t{1}", L"C:\\a b.avi", {5, 129}, time, 400000},
                                     {0, L"x", L"C:\\a b.avi", {0, 0}, 0, 400000}};
    std::string text = ClipFile::format(L"C:\\a b.avi", clips, {"# note"});
    EXPECT_EQ(
        text,
        "marvo clips 1: a b.avi\n5\t129\t2026-11-21 19:30:00.480\tTor \xc3\xa4\t{1}\n0\t0\t-\tx\n# note\n");
    ClipFileContent back = ClipFile::parse(text, L"D:\\A B.AVI", Language::english);
    EXPECT_TRUE(back.findings.empty() && back.kept == std::vector<std::string>{"# note"} &&
                back.clips.size() == 2);
    EXPECT_TRUE(back.clips[0].name == clips[0].name && back.clips[0].timeOfDay_ms == time &&
                back.clips[0].file == L"D:\\A B.AVI");
    const std::vector<std::string> damaged = {"5\t4\t-\tbackward",
                                              "1\t2\t2026-13-01 00:00:00.000\tx",
                                              "1\t2\t-\t",
                                              "-1\t2\t-\tx",
                                              "1\t2\t2026-11-21 25:00:00.000\tx",
                                              "1\t99999999999999\t-\tx",
                                              "\xff\x00 junk",
                                              "1\t2"};
    text = "\xef\xbb\xbfmarvo clips 1: c.avi\r\n";
    for (const std::string& line : damaged) {
        text += line + "\r\n";
    }
    back = ClipFile::parse(text + "\n7\t8\t-\tgood", L"c.avi", Language::german);
    EXPECT_TRUE(back.kept == damaged && back.clips.size() == 1 && !back.refused);
    EXPECT_EQ(back.findings[1],
              L"Zeile 3 der Clipliste ist kein Clip: 1\t2\t2026-13-01 00:00:00.000\tx. Sie bleibt stehen.");
    EXPECT_EQ(
        ClipFile::parse(ClipFile::format(L"c.avi", back.clips, back.kept), L"c.avi", Language::german).kept,
        damaged);
    back = ClipFile::parse("marvo clips 1: other.avi\n1\t2\t-\tx\n", L"c.avi", Language::english);
    EXPECT_TRUE(back.refused && back.clips.empty() &&
                back.findings[0].find(L"other.avi") != std::wstring::npos);
    EXPECT_TRUE(ClipFile::parse("1\t2\t-\tx\n", L"c.avi", Language::english).refused);
    FakeDisk disk;
    std::wstring why;
    disk.refused = {L"c.avi.clips"};
    EXPECT_TRUE(!ClipFile::write(disk, L"c.avi", clips, {}, why) && why == L"refused");
    disk.content[L"c.avi.clips"] = "";
    EXPECT_TRUE(ClipFile::read(disk, L"c.avi", Language::english).refused);
    disk.refused.clear();
    EXPECT_TRUE(ClipFile::write(disk, L"c.avi", {}, {}, why) && !disk.exists(L"c.avi.clips"));
    EXPECT_EQ(ClipFile::fileWord(L"1:0 \"goal\"?. ") + ClipFile::fileWord(L"..."), L"1_0 _goal__clip");
    EXPECT_EQ(ClipFile::fileWord(std::wstring(300, L'x')).size(), 100u);
}

TEST(Settings, ComeBackAndNameNonsense) {
    std::vector<std::wstring> findings;
    Settings settings;
    settings.camera = L"DV = \xe4";
    settings.folder = L"D:\\x";
    settings.raw = settings.mute = true;
    settings.deinterlace = settings.backToLive = false;
    settings.ring_frames = 99;
    settings.port = 4711;
    settings.language = Language::german;
    settings.token = L"geheim";
    settings.kept = {"what = 1"};
    std::wstring why;
    settings.keys.set(Command::record, L"F4 Insert", Language::english, why);
    settings.keys.set(Command::stop, L"", Language::english, why);
    for (const wchar_t* file : {L"a", L"b", L"A"}) {
        settings.addRecent(file);
    }
    const std::string text = SettingsFile::format(settings);
    const Settings back = SettingsFile::parse(text, findings);
    EXPECT_TRUE(findings.empty()) << utf8(findings.front());
    EXPECT_EQ(SettingsFile::format(back), text);
    EXPECT_TRUE(back.camera == settings.camera && back.raw && !back.backToLive &&
                back.keys.text(Command::stop).empty());
    EXPECT_EQ(back.recent, (std::vector<std::wstring>{L"A", L"b"}));
    EXPECT_EQ(back.keys.text(Command::record), L"F4 Insert");

    const Settings bad =
        SettingsFile::parse("ring = 24\nrolling=1e3\nport = 80\n\ndelay\nmute = maybe\ncolour = red\n[keys]\n"
                            "record = J\nrecord = Hyper\nfly = F4\n[zz]\nport = 4711\nlanguage = x\n",
                            findings);
    EXPECT_TRUE(bad.ring_frames == 250 && bad.rolling_min == 10 && bad.port == 0 &&
                bad.keys.text(Command::record) == L"R");
    std::vector<int> lines;
    for (const std::wstring& finding : findings) {
        lines.push_back(std::stoi(finding.substr(finding.find(L"line ") + 5)));
    }
    EXPECT_EQ(lines, (std::vector<int>{1, 2, 3, 5, 6, 7, 9, 10, 10, 11, 12, 13, 14}));
    EXPECT_EQ(findings[0],
              L"marvo-replay.ini, line 1: ring = 24 is not a whole number from 25 to 2000; 250 is used.");
    EXPECT_EQ(bad.kept.size(), 6u);
}

TEST(Names, AreNeverThoseOfFilesThatAreThere) {
    FakeDisk disk;
    const std::int64_t time = timeOfDay_ms({2026, 1, 2, 3, 4, 5, 999});
    for (const wchar_t* name : {L"D:\\2026-01-02 03-04-05.avi", L"D:\\2026-01-02 03-04-05 (2).avi",
                                L"D:\\2026-01-02 03-04-05 (3).avi"}) {
        EXPECT_EQ(recordingName(disk, L"D:", time, L".avi"), name);
        disk.content[disk.content.size() == 1 ? name + std::wstring(L".clips") : name] = "";
    }
    FakeDisk rolling;
    RollingFile files(rolling, L"D:\\r", L".avi");
    std::wstring why;
    std::vector<std::wstring> made;
    for (int i = 0; i < 5; ++i) {
        made.push_back(files.next(time + i / 2 * 1000, why));
        rolling.content[made.back()] = "";
    }
    rolling.content[made[1] + L".clips"] = "";
    rolling.content[L"D:\\r\\rolling\\holiday.avi"] = "";
    rolling.refused = {made[2]};
    EXPECT_EQ(files.recycle(), std::vector<std::wstring>{made[0]});
    rolling.refused.clear();
    EXPECT_EQ(files.recycle(), std::vector<std::wstring>{made[2]});
    EXPECT_TRUE(rolling.exists(made[1]) && rolling.exists(made[3]) && rolling.exists(made[4]) &&
                rolling.content.size() == 5);
    rolling.refused = {L"D:\\r\\rolling"};
    EXPECT_TRUE(files.next(time, why).empty() && why == L"D:\\r\\rolling: refused");
    EXPECT_TRUE(!RollingFile::due(999, 1000, false) && RollingFile::due(1000, 1000, false) &&
                !RollingFile::due(2999, 1000, true));
}

TEST(OutputPlace, IsWhereTheOperatorIsNot) {
    const struct {
        std::size_t monitors, operators;
        int wanted, place; ///< place -1: an ordinary window
    } cases[] = {{1, 0, 0, -1}, {1, 0, 5, -1}, {2, 0, 0, 1}, {2, 1, 0, 0}, {2, 0, 1, -1}, {2, 0, 2, 1},
                 {2, 0, 7, 1},  {2, 1, 7, 0},  {3, 2, 2, 1}, {3, 0, 3, 2}, {0, 0, 1, -1}, {2, 0, -1, 1}};
    for (const auto& one : cases) {
        const auto place = outputMonitor(one.monitors, one.operators, one.wanted);
        EXPECT_EQ(place ? static_cast<int>(*place) : -1, one.place) << one.monitors << ' ' << one.wanted;
    }
}

TEST(Jobs, RunOneByOneAndCanBeCancelled) {
    JobQueue queue;
    std::atomic<bool> started = false;
    const auto until = [&queue](auto condition) {
        std::vector<JobQueue::Job> over;
        while (!condition(over)) {
            for (JobQueue::Job& job : queue.takeOver()) {
                over.push_back(std::move(job));
            }
            std::this_thread::yield();
        }
        return over;
    };
    const std::uint64_t endless = queue.add(L"a", [&](const JobQueue::Progress& progress, std::wstring&) {
        started = true;
        while (progress(0.5)) {
            std::this_thread::yield();
        }
        return false;
    });
    const std::uint64_t waiting =
        queue.add(L"b", [](const JobQueue::Progress&, std::wstring&) { return true; });
    queue.add(L"c", [](const JobQueue::Progress&, std::wstring& why) { return why = L"full", false; });
    queue.add(L"d",
              [](const JobQueue::Progress&, std::wstring&) -> bool { throw std::runtime_error("boom"); });
    queue.add(L"e", [](const JobQueue::Progress&, std::wstring&) { return true; });
    until([&](const auto&) { return started && queue.jobs().front().progress == 0.5; });
    EXPECT_TRUE(queue.busy() && queue.cancel(waiting) && !queue.cancel(waiting) && !queue.cancel(99) &&
                queue.cancel(endless));
    auto over = until([](const auto& done) { return done.size() == 5; });
    std::sort(over.begin(), over.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    using State = JobQueue::State;
    const State states[] = {State::cancelled, State::cancelled, State::failed, State::failed, State::done};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(over[i].state, states[i]) << i;
    }
    EXPECT_TRUE(over[2].why == L"full" && over[3].why == L"boom" && over[4].progress == 1.0 && !queue.busy());
}
