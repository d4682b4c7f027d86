#include "host/script_runner.h"

#include "host/expression.h"
#include "host/screenshot.h"
#include "host/text.h"

#include <cmath>
#include <cstdio>

namespace host {

namespace {

constexpr double poll_ms = 5.0;

long long performanceCounter() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

bool compares(double left, const std::string& comparison, double right, double tolerance) {
    if (comparison == "==") {
        return left == right;
    }
    if (comparison == "!=") {
        return left != right;
    }
    if (comparison == "<") {
        return left < right;
    }
    if (comparison == "<=") {
        return left <= right;
    }
    if (comparison == ">") {
        return left > right;
    }
    if (comparison == ">=") {
        return left >= right;
    }
    return std::fabs(left - right) <= tolerance;
}

/// A whole number that fits an int; what does not is brought to its ends.
int toInt(double value) {
    return static_cast<int>(std::fmin(std::fmax(value, INT_MIN), INT_MAX));
}

} // namespace

ScriptRunner::ScriptRunner(AppWindow& window, Transport& transport, std::wstring directory)
    : window_(window), transport_(transport), directory_(std::move(directory)), start_(performanceCounter()) {
}

bool ScriptRunner::run(const Script& script) {
    for (const ScriptLine& line : script.lines()) {
        StepResult result = step(line);
        if (result.held && !quit_ && !window_.dispatch(0.0)) {
            result.held = false;
            result.message = "the window was closed";
        }
        std::printf("[%7.0f ms] %s %3d  %s%s%s\n             %s\n", result.time_ms,
                    result.held ? "ok  " : "FAIL", line.number, line.text.c_str(),
                    result.message.empty() ? "" : "  -> ", result.message.c_str(),
                    result.status.line().c_str());
        std::fflush(stdout);
        report_.add(std::move(result));
        if (quit_ || window_.handle() == nullptr) {
            break;
        }
    }
    return report_.failures() == 0;
}

void ScriptRunner::notePost(unsigned long frame) {
    const play_info info = transport_.info();
    // A slow host reads a record that is newer than the message; what it says then belongs to a later post.
    if (static_cast<unsigned long>(info.frame & 0xFFFFFFFFu) == frame) {
        wasReplaying_ = info.replaying;
    }
    for (const std::string& name : watching_) {
        watches_[name].add({elapsed_ms(), static_cast<long long>(frame), wasReplaying_});
    }
}

double ScriptRunner::elapsed_ms() const {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(performanceCounter() - start_) * 1000.0 /
           static_cast<double>(frequency.QuadPart);
}

const std::map<std::string, ScriptRunner::Handler>& ScriptRunner::handlers() {
    static const std::map<std::string, Handler> all = {
        {"init", &ScriptRunner::doInit},
        {"playinit", &ScriptRunner::doPlayInit},
        {"live", &ScriptRunner::doLive},
        {"record", &ScriptRunner::doRecord},
        {"stop", &ScriptRunner::doStop},
        {"pause", &ScriptRunner::doPause},
        {"resume", &ScriptRunner::doResume},
        {"replay", &ScriptRunner::doReplay},
        {"last", &ScriptRunner::doLast},
        {"speed", &ScriptRunner::doSpeed},
        {"seek", &ScriptRunner::doSeek},
        {"mark", &ScriptRunner::doMark},
        {"element", &ScriptRunner::doElement},
        {"show", &ScriptRunner::doShow},
        {"hide", &ScriptRunner::doHide},
        {"size", &ScriptRunner::doSize},
        {"pos", &ScriptRunner::doPos},
        {"done", &ScriptRunner::doDone},
        {"quit", &ScriptRunner::doQuit},
        {"wait", &ScriptRunner::doWait},
        {"wait-frame", &ScriptRunner::doWaitFrame},
        {"wait-written", &ScriptRunner::doWaitWritten},
        {"wait-shown", &ScriptRunner::doWaitShown},
        {"expect", &ScriptRunner::doExpect},
        {"watch", &ScriptRunner::doWatch},
        {"expect-sequence", &ScriptRunner::doExpectSequence},
        {"let", &ScriptRunner::doLet},
        {"screenshot", &ScriptRunner::doScreenshot},
        {"log", &ScriptRunner::doLog},
        {"call", &ScriptRunner::doCall},
        {"set", &ScriptRunner::doSet},
    };
    return all;
}

StepResult ScriptRunner::step(const ScriptLine& line) {
    StepResult result;
    result.line = line;
    const auto handler = handlers().find(line.words.front());
    const Outcome outcome = handler != handlers().end() ? (this->*handler->second)(line.words)
                                                        : Outcome{false, "the command cannot be run"};
    result.time_ms = elapsed_ms();
    result.held = outcome.held;
    result.message = outcome.message;
    result.status = transport_.status();
    return result;
}

ScriptRunner::Outcome ScriptRunner::command(bool worked) const {
    return {true, worked ? "true" : "false: " + transport_.explanation()};
}

double ScriptRunner::number(const std::string& expression) const {
    const Status status = transport_.status();
    std::string error;
    return evaluate(
               expression,
               [&](const std::string& name) -> std::optional<double> {
                   const auto saved = values_.find(name);
                   return saved != values_.end() ? saved->second : status.value(name);
               },
               error)
        .value_or(0.0);
}

long long ScriptRunner::frame(const std::string& expression) const {
    return std::llround(number(expression));
}

ScriptRunner::Outcome ScriptRunner::waitUntil(const char* name, const Words& words) {
    const double wanted = number(words[1]);
    const double until = elapsed_ms() + number(words[2]);
    for (;;) {
        const double now = number(name);
        if (now >= wanted) {
            return {true, std::string(name) + " " + numberText(now)};
        }
        if (elapsed_ms() >= until || !window_.dispatch(poll_ms)) {
            return {false, std::string(name) + " is only " + numberText(now) + ", not " + numberText(wanted)};
        }
    }
}

ScriptRunner::Outcome ScriptRunner::doInit(const Words& words) {
    return command(
        transport_.init(words.size() > 2 ? std::optional<int>(toInt(number(words[2]))) : std::nullopt));
}

ScriptRunner::Outcome ScriptRunner::doPlayInit(const Words& words) {
    return command(transport_.playInit(toInt(number(words[1])), toInt(number(words[2])), wide(words[3])));
}

ScriptRunner::Outcome ScriptRunner::doLive(const Words&) {
    return command(transport_.live());
}

ScriptRunner::Outcome ScriptRunner::doRecord(const Words& words) {
    return command(transport_.record(words.size() > 1 ? wide(words[1]) : std::wstring()));
}

ScriptRunner::Outcome ScriptRunner::doStop(const Words&) {
    return command(transport_.stop());
}

ScriptRunner::Outcome ScriptRunner::doPause(const Words&) {
    return command(transport_.setPaused(true));
}

ScriptRunner::Outcome ScriptRunner::doResume(const Words&) {
    return command(transport_.setPaused(false));
}

ScriptRunner::Outcome ScriptRunner::doReplay(const Words& words) {
    return command(transport_.replay(frame(words[1]), frame(words[2]),
                                     words.size() > 3 ? wide(words[3]) : std::wstring()));
}

ScriptRunner::Outcome ScriptRunner::doLast(const Words& words) {
    return command(transport_.replayLast(number(words[1])));
}

ScriptRunner::Outcome ScriptRunner::doSpeed(const Words& words) {
    return command(transport_.setSpeed(number(words[1])));
}

ScriptRunner::Outcome ScriptRunner::doSeek(const Words& words) {
    return command(transport_.seek(frame(words[1])));
}

ScriptRunner::Outcome ScriptRunner::doMark(const Words& words) {
    const long long marked = words.size() > 2 ? frame(words[2]) : transport_.currentFrame();
    return command(transport_.mark(words[1] == "in", marked, words.size() > 3 ? toInt(number(words[3])) : 1));
}

ScriptRunner::Outcome ScriptRunner::doElement(const Words& words) {
    return command(transport_.playElement(toInt(number(words[1]))));
}

ScriptRunner::Outcome ScriptRunner::doShow(const Words&) {
    return command(transport_.show());
}

ScriptRunner::Outcome ScriptRunner::doHide(const Words&) {
    return command(transport_.hide());
}

ScriptRunner::Outcome ScriptRunner::doSize(const Words& words) {
    return command(transport_.setSize(toInt(number(words[1])), toInt(number(words[2]))));
}

ScriptRunner::Outcome ScriptRunner::doPos(const Words& words) {
    return command(transport_.setPosition(toInt(number(words[1])), toInt(number(words[2]))));
}

ScriptRunner::Outcome ScriptRunner::doDone(const Words&) {
    return command(transport_.done());
}

ScriptRunner::Outcome ScriptRunner::doQuit(const Words&) {
    quit_ = true;
    return {true, {}};
}

ScriptRunner::Outcome ScriptRunner::doWait(const Words& words) {
    window_.dispatch(std::fmax(number(words[1]), 0.0));
    return {true, {}};
}

ScriptRunner::Outcome ScriptRunner::doWaitFrame(const Words& words) {
    return waitUntil("newest", words);
}

ScriptRunner::Outcome ScriptRunner::doWaitWritten(const Words& words) {
    return waitUntil("written", words);
}

ScriptRunner::Outcome ScriptRunner::doWaitShown(const Words& words) {
    return waitUntil("shown", words);
}

ScriptRunner::Outcome ScriptRunner::doExpect(const Words& words) {
    const double left = number(words[1]);
    const double right = number(words[3]);
    const double tolerance = words.size() > 4 ? number(words[4]) : 0.0;
    return {compares(left, words[2], right, tolerance), words[1] + " is " + numberText(left)};
}

ScriptRunner::Outcome ScriptRunner::doWatch(const Words& words) {
    if (words[1] == "start") {
        watches_[words[2]] = PlayWatch();
        watching_.insert(words[2]);
        return {true, {}};
    }
    if (watching_.erase(words[2]) == 0) {
        return {false, "no watch called " + words[2] + " was started"};
    }
    return {true, std::to_string(watches_[words[2]].posts().size()) + " posts"};
}

ScriptRunner::Outcome ScriptRunner::doExpectSequence(const Words& words) {
    const auto watch = watches_.find(words[1]);
    if (watch == watches_.end()) {
        return {false, "no watch called " + words[1] + " was started"};
    }
    const std::string wrong = watch->second.checkLoop(frame(words[3]), frame(words[4]), number(words[6]));
    return {wrong.empty(), wrong.empty() ? std::to_string(watch->second.posts().size()) + " posts" : wrong};
}

ScriptRunner::Outcome ScriptRunner::doLet(const Words& words) {
    values_[words[1]] = number(words[2]);
    return {true, words[1] + " is " + numberText(values_[words[1]])};
}

ScriptRunner::Outcome ScriptRunner::doScreenshot(const Words& words) {
    const std::wstring file = directory_ + wide(words[1]) + L".bmp";
    if (!saveScreenshot(window_.handle(), file)) {
        return {false, "the picture could not be written to " + utf8(file)};
    }
    report_.addScreenshot(utf8(file));
    return {true, utf8(file)};
}

ScriptRunner::Outcome ScriptRunner::doLog(const Words& words) {
    return command(transport_.log(words[1]));
}

ScriptRunner::Outcome ScriptRunner::doCall(const Words& words) {
    return command(transport_.call(words[1]));
}

ScriptRunner::Outcome ScriptRunner::doSet(const Words& words) {
    const bool worked = transport_.set(words[1], words[2]);
    return {worked, worked ? "" : transport_.explanation()};
}

} // namespace host
