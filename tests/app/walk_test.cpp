#include "app/protocol.h"
#include "tests/app/fakes.h"

#include <cstdlib>
#include <random>

using app::Command;
using app::Outcome;

namespace {

/// An operator who presses anything at any time, while camera and disk fail.
class Walk {
public:
    explicit Walk(unsigned seed) : random_(seed) { evening_.oldFile(L"C:\\old.avi", 40, -1000); }

    void step() {
        std::wstring argument;
        const std::span<const app::CommandInfo> all = app::commands();
        switch (below(40)) {
        case 0:
            return check("scrub", evening_.session->scrubTo(below(3000)));
        case 1:
            return check("jog", evening_.session->jog(static_cast<int>(below(21)) - 10));
        case 2:
            return check("shuttle", evening_.session->shuttle(static_cast<int>(below(9)) - 4));
        case 3:
            return check("open", evening_.session->open(anyFile()));
        case 4:
            using Camera = app::EngineState::Camera;
            if (evening_.engine.now.built) {
                evening_.engine.now.camera =
                    below(4) ? Camera::live
                             : std::vector{Camera::gone, Camera::silent, Camera::changed}[below(3)];
            }
            evening_.engine.hasCamera = below(8) != 0;
            return;
        case 5:
            evening_.engine.diskStands = below(4) == 0;
            evening_.engine.refuseRecord = below(6) == 0;
            return;
        case 6:
        case 7:
        case 8:
            evening_.run(static_cast<int>(below(below(10) == 0 ? 600 : 30)));
            return;
        default:
            break;
        }
        const app::CommandInfo& info = all[below(static_cast<unsigned>(all.size()))];
        if (below(2) && info.argument) {
            argument = std::to_wstring(static_cast<int>(below(30)) - 5);
        }
        perform(info, argument);
    }

private:
    std::wstring anyFile() {
        const std::vector<app::Segment>& segments = evening_.session->reel().segments();
        const unsigned which = below(4);
        return which == 0                        ? evening_.engine.recordFile()
               : which == 1 && !segments.empty() ? segments[0].file
               : which == 2                      ? L"C:\\none.avi"
                                                 : L"C:\\old.avi";
    }

    void perform(const app::CommandInfo& info, const std::wstring& argument) {
        app::Session& session = *evening_.session;
        FakeEngine& engine = evening_.engine;
        evening_.run(1);
        const app::View before = session.view();
        const bool answers = before.question && before.question->find(L"Stop recording") == 0 &&
                             (info.command == Command::stop || info.command == Command::confirm);
        engine.stopsAllowed = answers ? 1 : 0;
        const int steps = info.command == Command::stepForward  ? 1
                          : info.command == Command::stepBack   ? -1
                          : info.command == Command::stepBack10 ? -10
                                                                : 0;
        const int calls = engine.calls;
        const Outcome outcome = session.perform(info.command, argument);
        EXPECT_TRUE(outcome != Outcome::done || engine.calls > calls ||
                    session.view().message.serial != before.message.serial ||
                    app::statusJson(session.view()) != app::statusJson(before))
            << info.name << " did nothing, silently";
        check(info.name, outcome);
        if (steps != 0 && before.line.position && before.held) {
            const std::uint64_t wanted = session.reel().moved(*before.line.position, steps);
            const bool told = session.view().message.serial != before.message.serial;
            EXPECT_TRUE(session.view().line.position == wanted || told) << info.name;
            EXPECT_TRUE(!told || wanted == *before.line.position || engine.diskStands ||
                        !engine.now.recording.on)
                << app::utf8(evening_.message());
        }
    }

    void check(const char* what, Outcome outcome) {
        const app::View& view = evening_.view();
        done_ += std::string(" ") + what;
        EXPECT_TRUE(evening_.engine.faults.empty()) << evening_.engine.faults.front() << " by" << done_;
        EXPECT_TRUE(outcome != Outcome::told ||
                    (view.message.serial != serial_ && !view.message.text.empty()))
            << done_;
        serial_ = view.message.serial;
        if (view.held && view.line.position) {
            evening_.run(1);
            const app::View& now = evening_.view();
            EXPECT_TRUE(!now.held ||
                        evening_.engine.picture == evening_.engine.pictureOf(now.file, now.frame))
                << app::utf8(now.file) << " " << now.frame << " shows " << evening_.engine.picture << " after"
                << done_;
        }
        if (done_.size() > 300) {
            done_.erase(0, 150);
        }
    }

    unsigned below(unsigned end) { return std::uniform_int_distribution<unsigned>(0, end - 1)(random_); }

    std::mt19937 random_;
    Evening evening_;
    std::uint64_t serial_ = 0;
    std::string done_;
};

} // namespace

TEST(Walk, NoKeyLosesAMatch) {
    const unsigned seeds = std::getenv("MARVO_LONG") ? 100 : 8;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE(seed);
        Walk walk(seed);
        for (int i = 0; i < 300 && !HasFailure(); ++i) {
            walk.step();
        }
        if (HasFailure()) {
            return;
        }
    }
}
