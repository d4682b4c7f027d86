#include "app/protocol.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace app {

namespace {

using nlohmann::ordered_json;

constexpr std::size_t longestLine_bytes = 1000;

std::string jsonText(const ordered_json& object) {
    return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string refusal(const std::string& why) {
    return jsonText({{"ok", false}, {"error", why}});
}

const char* name(View::Mode mode) {
    constexpr const char* names[] = {"no-camera", "no-signal", "live",         "held",
                                     "replay",    "playlist",  "old-recording"};
    return names[static_cast<int>(mode)];
}

const char* name(View::Recording recording) {
    constexpr const char* names[] = {"off", "rolling", "recording", "failing"};
    return names[static_cast<int>(recording)];
}

const char* name(PlayMode mode) {
    constexpr const char* names[] = {"once", "loop", "ping-pong"};
    return names[static_cast<int>(mode)];
}

template <class Number>
ordered_json orNull(const std::optional<Number>& number) {
    return number ? ordered_json(*number) : ordered_json(nullptr);
}

ordered_json status(const View& view) {
    ordered_json clips = ordered_json::array();
    for (const View::ClipRow& row : view.clips) {
        clips.push_back({{"name", utf8(row.clip.name)},
                         {"file", utf8(row.clip.file)},
                         {"first", row.clip.frames.first},
                         {"last", row.clip.frames.last},
                         {"chosen", row.chosen},
                         {"playing", row.playing}});
    }
    ordered_json alarms = ordered_json::array();
    for (const View::Alarm& alarm : view.alarms) {
        alarms.push_back(utf8(alarm.text));
    }
    return {{"ok", true},
            {"mode", name(view.mode)},
            {"source", utf8(view.source)},
            {"file", utf8(view.file)},
            {"frame", view.frame == noFrame ? ordered_json(nullptr) : ordered_json(view.frame)},
            {"time", utf8(view.timeOfDay)},
            {"held", view.held},
            {"speed", view.speed},
            {"play", name(view.playMode)},
            {"position", orNull(view.line.position)},
            {"newest", orNull(view.line.liveEdge)},
            {"recording", name(view.recording)},
            {"recordingFile", utf8(view.recordingFile)},
            {"recorded_ms", view.recorded_ms},
            {"driveLeft_ms", orNull(view.driveLeft_ms)},
            {"noSignal_ms", view.noSignal_ms},
            {"mute", view.mute},
            {"question", view.question ? ordered_json(utf8(*view.question)) : ordered_json(nullptr)},
            {"message", utf8(view.message.text)},
            {"alarms", alarms},
            {"clips", clips}};
}

std::string commandList() {
    ordered_json list = ordered_json::array();
    for (const CommandInfo& row : commands()) {
        list.push_back({{"number", static_cast<int>(row.command)}, {"name", row.name}});
    }
    return jsonText({{"ok", true}, {"commands", list}});
}

/// Whether two texts are the same, in a time that does not tell where they differ.
bool sameSecret(const std::string& a, const std::string& b) {
    unsigned difference = a.size() == b.size() ? 0 : 1;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |=
            static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[b.empty() ? 0 : i % b.size()]);
    }
    return difference == 0;
}

} // namespace

std::string statusJson(const View& view) {
    return jsonText(status(view));
}

ProtocolConnection::ProtocolConnection(Session& session, const std::wstring& token, ForWindow forWindow)
    : session_(session), token_(utf8(token)), forWindow_(std::move(forWindow)), closed_(token.empty()) {}

std::string ProtocolConnection::receive(std::string_view bytes) {
    std::string answers;
    for (const char byte : bytes) {
        if (closed_) {
            break;
        }
        if (byte != '\n') {
            pending_ += byte;
            if (pending_.size() > longestLine_bytes) {
                answers += refusal("a line has at most 1000 bytes") + "\n";
                closed_ = true;
            }
            continue;
        }
        if (pending_.ends_with('\r')) {
            pending_.pop_back();
        }
        answers += answer(std::exchange(pending_, {})) + "\n";
    }
    return answers;
}

std::string ProtocolConnection::answer(const std::string& line) {
    if (!known_) {
        known_ = sameSecret(line, token_);
        closed_ = !known_;
        return known_ ? jsonText({{"ok", true}, {"message", "marvo-replay"}}) : refusal("wrong token");
    }
    const std::size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    const std::string argument = blank == line.npos ? "" : line.substr(blank + 1);
    if (word == "status") {
        return statusJson(session_.view());
    }
    if (word == "commands") {
        return commandList();
    }
    const std::optional<Command> command = commandOf(word);
    if (word == "call" && argument.empty()) {
        return refusal("call needs a text");
    }
    if (word != "call" && !command) {
        return refusal("there is no command \"" + word + "\"; \"commands\" lists them");
    }
    if (word != "call" && !argument.empty() && !commandInfo(*command).argument) {
        return refusal(word + " takes nothing behind its name");
    }
    const Outcome outcome =
        word == "call" ? session_.call(argument) : session_.perform(*command, wide(argument));
    const std::string message = utf8(session_.view().message.text);
    if (outcome == Outcome::told) {
        return refusal(message);
    }
    if (outcome == Outcome::window && (!forWindow_ || !forWindow_(*command, wide(argument)))) {
        return refusal(word + " needs the window");
    }
    return jsonText({{"ok", true}, {"message", message}});
}

} // namespace app
