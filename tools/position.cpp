#include "tools/position.h"

#include "tools/arguments.h"
#include "tools/failure.h"
#include "tools/head_reader.h"
#include "tools/progress.h"
#include "tools/text.h"

#include "marvo/dv/recorded_at.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

namespace dvrec {

namespace {

constexpr long secondsOfDay = 24 * 60 * 60;

bool isNumber(const std::string& text, size_t mostDigits) {
    return !text.empty() && text.size() <= mostDigits &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

std::vector<std::string> split(const std::string& text, const char* separators) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t end; (end = text.find_first_of(separators, start)) != std::string::npos; start = end + 1) {
        parts.push_back(text.substr(start, end - start));
    }
    parts.push_back(text.substr(start));
    return parts;
}

/// Seconds of "h:mm:ss", "m:ss" and "s", the last with digits behind a point if `fraction`.
std::optional<double> readSeconds(const std::string& text, bool fraction) {
    std::vector<std::string> parts = split(text, ":");
    const std::vector<std::string> last = split(parts.back(), ".");
    constexpr size_t mostDigits = 9;
    if (parts.size() > 3 || last.size() > (fraction ? 2u : 1u) ||
        (last.size() == 2 && !isNumber(last[1], mostDigits))) {
        return std::nullopt;
    }
    parts.back() = last[0];
    double seconds = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
        constexpr size_t mostOfFirst = 6;
        if (!isNumber(parts[i], i == 0 ? mostOfFirst : 2) || (i > 0 && std::stoul(parts[i]) > 59)) {
            return std::nullopt;
        }
        seconds = seconds * 60 + std::stoul(parts[i]);
    }
    return last.size() == 2 ? seconds + std::strtod(("0." + last[1]).c_str(), nullptr) : seconds;
}

std::optional<long> readDay(const std::string& text) {
    const std::vector<std::string> parts = split(text, "-");
    if (parts.size() != 3 || !isNumber(parts[0], 4) || !isNumber(parts[1], 2) || !isNumber(parts[2], 2)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date(std::chrono::year(std::stoi(parts[0])),
                                           std::chrono::month(static_cast<unsigned>(std::stoul(parts[1]))),
                                           std::chrono::day(static_cast<unsigned>(std::stoul(parts[2]))));
    return date.ok()
               ? std::optional(static_cast<long>(std::chrono::sys_days(date).time_since_epoch().count()))
               : std::nullopt;
}

bool readClock(const std::string& text, Position& position) {
    const std::vector<std::string> parts = split(text, " Tt");
    if (parts.size() == 2) {
        position.day = readDay(parts[0]);
    }
    const std::string time = split(parts.back(), ":").size() == 2 ? parts.back() + ":00" : parts.back();
    const std::optional<double> seconds =
        split(time, ":").size() == 3 ? readSeconds(time, false) : std::nullopt;
    position.seconds = seconds.value_or(0);
    position.kind = Position::Kind::clock;
    return parts.size() <= 2 && position.day.has_value() == (parts.size() == 2) && seconds &&
           *seconds < secondsOfDay;
}

bool readTimeCode(const std::vector<std::string>& parts, Position& position) {
    if (!std::all_of(parts.begin(), parts.end(), [](const std::string& part) { return isNumber(part, 2); })) {
        return false;
    }
    const auto value = [&](size_t i) { return static_cast<unsigned>(std::stoul(parts[i])); };
    position.timeCode = {value(0), value(1), value(2), value(3), false};
    position.kind = Position::Kind::timeCode;
    return value(0) < 24 && value(1) < 60 && value(2) < 60 && value(3) < vdv::system525.countedRate;
}

/// Where among the frames a place lies that has a number of its own for each.
enum class Edge {
    first, ///< the first frame that has the number, or is behind it
    last,  ///< the last frame that has the number, or is in front of it
    exact, ///< the first frame that has it
};

class Search {
public:
    Search(const recording::Reader& from, const Position& position, const Arguments& arguments)
        : from_(from), position_(position), arguments_(arguments), heads_(from) {}

    unsigned long long find(Edge edge) {
        Progress progress("looking for " + position_.text, arguments_.progress);
        const unsigned long long frames = from_.frames();
        std::optional<unsigned long long> between;
        std::optional<Match> former;
        for (unsigned long long frame = 0; frame < frames; ++frame) {
            progress.update(frame * from_.frameSize(), frames * from_.frameSize());
            const std::optional<long long> behind = distance(frame);
            if (!behind) {
                continue;
            }
            if (*behind == 0 && edge != Edge::last) {
                return frame;
            }
            if (former && former->behind == 0 && *behind != 0) {
                return former->frame;
            }
            if (former && !between && former->behind < 0 && *behind > 0) {
                between = edge == Edge::first ? frame : former->frame;
            }
            former = Match{frame, *behind};
        }
        if (former && former->behind == 0) {
            return former->frame;
        }
        if (between && edge != Edge::exact) {
            return *between;
        }
        throw Failure{
            ExitStatus::usage,
            "No frame of " + quoted(arguments_.files[0]) + " has " +
                (position_.kind == Position::Kind::timeCode ? "the time code " : "the date and time ") +
                position_.text + "; 'dvrec info' tells which it has."};
    }

private:
    struct Match {
        unsigned long long frame;
        long long behind; ///< how far the frame lies behind the place
    };

    std::optional<long long> distance(unsigned long long frame) {
        const vdv::FrameBytes head = heads_.head(frame);
        return position_.kind == Position::Kind::timeCode ? timeCodeDistance(head) : clockDistance(head);
    }

    std::optional<long long> timeCodeDistance(vdv::FrameBytes head) const {
        const std::optional<vdv::TimeCode> code = vdv::TimeCode::read(head);
        if (!code) {
            return std::nullopt;
        }
        const unsigned rate = vdv::systemSaid(head).countedRate;
        vdv::TimeCode wanted = position_.timeCode;
        wanted.dropFrame = code->dropFrame;
        return static_cast<long long>(code->count(rate)) - static_cast<long long>(wanted.count(rate));
    }

    std::optional<long long> clockDistance(vdv::FrameBytes head) const {
        const vdv::RecordedAt at = vdv::RecordedAt::read(head);
        if (!at.time || (position_.day && !at.date)) {
            return std::nullopt;
        }
        long long seconds = at.time->hour * 3600ll + at.time->minute * 60ll + at.time->second -
                            static_cast<long long>(position_.seconds);
        if (position_.day) {
            const std::chrono::sys_days day = std::chrono::year(static_cast<int>(at.date->year)) /
                                              std::chrono::month(at.date->month) /
                                              std::chrono::day(at.date->day);
            seconds += (day.time_since_epoch().count() - *position_.day) * 1ll * secondsOfDay;
        }
        return seconds;
    }

    const recording::Reader& from_;
    const Position& position_;
    const Arguments& arguments_;
    HeadReader heads_;
};

unsigned long long resolve(const recording::Reader& from, const Position& position,
                           const Arguments& arguments, Edge edge) {
    if (position.kind == Position::Kind::frame) {
        return position.frame;
    }
    if (position.kind != Position::Kind::duration) {
        return Search(from, position, arguments).find(edge);
    }
    const vdv::System* const system = vdv::systemOf(from.frameSize());
    constexpr double rounding = 1e-6;
    const auto frame = static_cast<unsigned long long>(
        std::floor(position.seconds * (system ? *system : vdv::system525).rate + rounding));
    // The end of the recording means its last frame.
    return frame == from.frames() && edge == Edge::last && frame > 0 ? frame - 1 : frame;
}

} // namespace

std::optional<Position> Position::read(const std::wstring& word) {
    Position position;
    position.text = utf8(word);
    const std::string& text = position.text;
    constexpr size_t mostDigits = 10;
    if (isNumber(text, mostDigits)) {
        position.frame = std::stoull(text);
        return position.frame <= 0xFFFFFFFFull ? std::optional(position) : std::nullopt;
    }
    bool read = false;
    const std::vector<std::string> parts = split(text, ":;");
    if (text.starts_with("@")) {
        read = readClock(text.substr(1), position);
    } else if (parts.size() == 4 && text.find(';') >= text.size() - parts[3].size() - 1) {
        read = readTimeCode(parts, position);
    } else if (const std::optional<double> seconds = readSeconds(text, true)) {
        position.kind = Kind::duration;
        position.seconds = *seconds;
        read = true;
    }
    return read ? std::optional(position) : std::nullopt;
}

Range rangeOf(const recording::Reader& from, const Arguments& arguments) {
    Range range{0, from.frames() > 0 ? from.frames() - 1 : 0};
    if (arguments.from) {
        range.first = resolve(from, *arguments.from, arguments, Edge::first);
    }
    if (arguments.to) {
        range.last = resolve(from, *arguments.to, arguments, Edge::last);
    }
    return range;
}

unsigned long long frameOf(const recording::Reader& from, const Arguments& arguments) {
    return resolve(from, *arguments.frame, arguments, Edge::exact);
}

} // namespace dvrec
