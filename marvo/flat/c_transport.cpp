// Recording, replay, elements and markers.
#include "marvo/core/text.h"
#include "marvo/flat/engine.h"
#include "marvo/flat/file_trouble.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/text.h"

#include <algorithm>
#include <climits>
#include <cmath>

using namespace flat;

namespace {

/// So far no recording goes, and sums stay within 64 bits.
constexpr marvo_i64 farthestStep = 1ll << 40;

constexpr marvo_u32 elements = frontend::Elements::count;

void checkElement(marvo_u32 number, marvo_u32 least) {
    if (number < least || number >= elements) {
        fail(MARVO_E_RANGE,
             vcore::format("There is no element %u: they go from %u to %u.", number, least, elements - 1));
    }
}

/// A point as the engine has it, or the other way round.
long long fromPoint(marvo_u64 point) {
    if (point == MARVO_NO_FRAME) {
        return -1;
    }
    if (point > LLONG_MAX) {
        fail(MARVO_E_RANGE, vcore::format("There is no frame %llu.", point));
    }
    return static_cast<long long>(point);
}
marvo_u64 toPoint(long long point) {
    return point < 0 ? MARVO_NO_FRAME : static_cast<marvo_u64>(point);
}

/// A command without arguments that always works on an engine that is built.
template <class Order>
int plain(Order order) {
    return guarded([&] {
        const Engine::Command command;
        command.needBuilt();
        order();
    });
}

/// Throws what is the matter with the file or the range.
void replay(Engine::Command& command, marvo_u64 from, marvo_u64 to, const std::wstring& file) {
    command.needBuilt();
    if (!dvFE.replay(from, to, file.c_str())) {
        explainFile(file.empty() ? dvFE.settings().playFile.oleStr() : file, from, to);
        fail(MARVO_E_REFUSED, "The engine refused the replay; marvo.log tells more.");
    }
    command.replayBegun();
}

} // namespace

int MARVO_CALL marvo_record_start(const char* file) {
    return guarded([&] {
        const std::wstring name = wideTextOrNone(file, "file name");
        const Engine::Command command;
        command.needBuilt();
        const std::wstring used = name.empty() ? dvFE.settings().recFile.oleStr() : name;
        if (!dvFE.startRecord(used.c_str())) {
            fail(MARVO_E_FILE,
                 quoted(used) + " cannot be recorded: " + utf8(dvFE.recordStatus().firstErrorText) + ".");
        }
        Engine::only().events().tell(MARVO_EVENT_RECORD_STARTED, 0, 0, 0,
                                     "The recording " + quoted(used) + " has begun.");
    });
}

int MARVO_CALL marvo_record_stop(void) {
    return plain([] { dvFE.stopRecord(); });
}

int MARVO_CALL marvo_record_flush(void) {
    return plain([] { dvFE.recFilter().store().fileFlush(); });
}

int MARVO_CALL marvo_live(void) {
    return plain([] { dvFE.live(); });
}

int MARVO_CALL marvo_replay(marvo_u64 from, marvo_u64 to, const char* file) {
    return guarded([&] {
        const std::wstring name = wideTextOrNone(file, "file name");
        Engine::Command command;
        replay(command, from, to, name);
    });
}

int MARVO_CALL marvo_pause(void) {
    return plain([] { dvFE.pause(); });
}

int MARVO_CALL marvo_resume(void) {
    return plain([] { dvFE.resume(); });
}

int MARVO_CALL marvo_set_speed(double factor) {
    return guarded([&] {
        const Engine::Command command;
        command.needBuilt();
        if (!std::isfinite(factor)) {
            fail(MARVO_E_RANGE, "The speed is no number.");
        }
        dvFE.setSpeed(factor);
    });
}

int MARVO_CALL marvo_seek(marvo_u64 frame) {
    return guarded([&] {
        const Engine::Command command;
        command.needBuilt();
        if (frame > LLONG_MAX) {
            fail(MARVO_E_RANGE, vcore::format("There is no frame %llu.", frame));
        }
        dvFE.seekPosition(frame);
    });
}

int MARVO_CALL marvo_step(marvo_i64 frames) {
    return guarded([&] {
        const Engine::Command command;
        command.needBuilt();
        if (frames < -farthestStep || frames > farthestStep) {
            fail(MARVO_E_RANGE, vcore::format("A step of %lld frames is too far.", frames));
        }
        const play_state play = dvFE.playFilter().state();
        if (play.info.frame == MARVO_NO_FRAME) {
            fail(MARVO_E_STATE, "No frame has been shown yet.");
        }
        // A step that was asked for before may not have been shown yet.
        auto target = static_cast<long long>(play.paused ? play.next : play.info.frame) + frames;
        if (!play.info.replaying) {
            const auto newest = static_cast<long long>(play.info.last) - 1;
            target = std::max(std::min(target, newest), 0ll);
        }
        dvFE.pause();
        dvFE.seekPosition(static_cast<unsigned long long>(target));
    });
}

int MARVO_CALL marvo_element_set(marvo_u32 number, marvo_u64 in, marvo_u64 out) {
    return guarded([&] {
        checkElement(number, 0);
        const Engine::Command command;
        dvFE.setElement(static_cast<int>(number), fromPoint(in), fromPoint(out));
    });
}

int MARVO_CALL marvo_element_get(marvo_u32 number, marvo_u64* in, marvo_u64* out) {
    return guarded([&] {
        checkElement(number, 0);
        if (!in || !out) {
            fail(MARVO_E_ARGUMENT, "There is no place for the points: it is null.");
        }
        const Engine::Command command;
        const auto [first, last] = dvFE.element(static_cast<int>(number));
        *in = toPoint(first);
        *out = toPoint(last);
    });
}

int MARVO_CALL marvo_element_play(marvo_u32 number) {
    return guarded([&] {
        checkElement(number, 1);
        Engine::Command command;
        const auto [first, last] = dvFE.element(static_cast<int>(number));
        if (first < 0 || last < 0) {
            fail(MARVO_E_STATE,
                 vcore::format("Element %u has no %s point.", number, first < 0 ? "in" : "out"));
        }
        replay(command, static_cast<marvo_u64>(first), static_cast<marvo_u64>(last), {});
    });
}

int MARVO_CALL marvo_marker(const char* text) {
    return guarded([&] {
        wideText(text, "marker");
        const Engine::Command command;
        dvFE.call(text);
    });
}

int MARVO_CALL marvo_log(const char* text) {
    return guarded([&] {
        wideText(text, "text");
        dvFE.log(text, false);
    });
}
