#include "host/report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

using Json = nlohmann::ordered_json;

/// A number, without a fraction where it has none; null for what is no number.
Json number(double value) {
    const bool whole = std::fabs(value) < 1e15 && value == std::trunc(value);
    return whole ? Json(std::llround(value)) : Json(value);
}

Json statusJson(const Status& status) {
    Json values = Json::object();
    status.forEach([&](const char* name, double value) { values[name] = number(value); });
    return values;
}

/// The posts, those in a row of the same frame as one with the number of its ticks.
Json watchJson(const PlayWatch& watch) {
    Json runs = Json::array();
    const Post* before = nullptr;
    for (const Post& post : watch.posts()) {
        if (!before || before->frame != post.frame || before->replaying != post.replaying) {
            runs.push_back({{"frame", post.frame},
                            {"time_ms", std::llround(post.time_ms)},
                            {"ticks", 0},
                            {"replaying", post.replaying}});
        }
        Json& ticks = runs.back()["ticks"];
        ticks = ticks.get<int>() + 1;
        before = &post;
    }
    return runs;
}

} // namespace

size_t Report::failures() const {
    return static_cast<size_t>(
        std::count_if(steps_.begin(), steps_.end(), [](const StepResult& step) { return !step.held; }));
}

std::string Report::json(const std::string& script, const std::map<std::string, PlayWatch>& watches) const {
    Json report = {{"script", script}, {"passed", failures() == 0}, {"failures", failures()}};
    report["steps"] = Json::array();
    for (const StepResult& step : steps_) {
        report["steps"].push_back({{"line", step.line.number},
                                   {"command", step.line.text},
                                   {"time_ms", std::llround(step.time_ms)},
                                   {"held", step.held},
                                   {"message", step.message},
                                   {"status", statusJson(step.status)}});
    }
    report["screenshots"] = screenshots_;
    report["watches"] = Json::object();
    for (const auto& [name, watch] : watches) {
        report["watches"][name] = watchJson(watch);
    }
    // A script may hold bytes that are no UTF-8.
    return report.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace host
