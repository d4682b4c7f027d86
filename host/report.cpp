#include "host/report.h"

#include "host/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace host {

namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            result += escape;
        } else {
            result += c;
        }
    }
    return result + '"';
}

std::string truth(bool value) {
    return value ? "true" : "false";
}

std::string milliseconds(double value) {
    return numberText(std::round(value));
}

/// Joins the parts of a list or object.
class Joiner {
public:
    void add(const std::string& part) {
        text_ += text_.empty() ? "" : ", ";
        text_ += part;
    }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

std::string statusJson(const Status& status) {
    Joiner values;
    status.forEach([&](const char* name, double value) {
        values.add(quoted(name) + ": " + (std::isfinite(value) ? numberText(value) : "null"));
    });
    return "{" + values.text() + "}";
}

std::string watchJson(const PlayWatch& watch) {
    Joiner runs;
    const std::vector<Post>& posts = watch.posts();
    for (size_t begin = 0; begin < posts.size();) {
        size_t end = begin;
        while (end < posts.size() && posts[end].frame == posts[begin].frame &&
               posts[end].replaying == posts[begin].replaying) {
            ++end;
        }
        runs.add("{\"frame\": " + std::to_string(posts[begin].frame) + ", \"time_ms\": " +
                 milliseconds(posts[begin].time_ms) + ", \"ticks\": " + std::to_string(end - begin) +
                 ", \"replaying\": " + truth(posts[begin].replaying) + "}");
        begin = end;
    }
    return "[" + runs.text() + "]";
}

} // namespace

size_t Report::failures() const {
    return static_cast<size_t>(
        std::count_if(steps_.begin(), steps_.end(), [](const StepResult& step) { return !step.held; }));
}

std::string Report::json(const std::string& script, const std::map<std::string, PlayWatch>& watches) const {
    std::string text = "{\n  \"script\": " + quoted(script) + ",\n  \"passed\": " + truth(failures() == 0) +
                       ",\n  \"failures\": " + std::to_string(failures()) + ",\n  \"steps\": [";
    for (size_t i = 0; i < steps_.size(); ++i) {
        const StepResult& step = steps_[i];
        text += std::string(i == 0 ? "" : ",") + "\n    {\"line\": " + std::to_string(step.line.number) +
                ", \"command\": " + quoted(step.line.text) + ", \"time_ms\": " + milliseconds(step.time_ms) +
                ", \"held\": " + truth(step.held) + ", \"message\": " + quoted(step.message) +
                ",\n     \"status\": " + statusJson(step.status) + "}";
    }
    Joiner files;
    for (const std::string& file : screenshots_) {
        files.add(quoted(file));
    }
    text += "\n  ],\n  \"screenshots\": [" + files.text() + "],\n  \"watches\": {";
    Joiner lists;
    for (const auto& [name, watch] : watches) {
        lists.add("\n    " + quoted(name) + ": " + watchJson(watch));
    }
    return text + lists.text() + "\n  }\n}\n";
}

} // namespace host
