#include "host/play_watch.h"

#include "host/text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace host {

namespace {

/// One frame and the ticks in a row in which it was due.
struct Run {
    Post first;
    long long ticks;
};

std::vector<Run> runsOf(const std::vector<Post>& posts) {
    std::vector<Run> runs;
    for (const Post& post : posts) {
        if (!runs.empty() && runs.back().first.frame == post.frame) {
            ++runs.back().ticks;
        } else {
            runs.push_back({post, 1});
        }
    }
    return runs;
}

std::vector<Post> withoutSurroundings(const std::vector<Post>& posts, long long from, long long to) {
    const auto belongs = [&](const Post& post) {
        return post.replaying && post.frame >= from && post.frame <= to;
    };
    const auto begin = std::find_if(posts.begin(), posts.end(), belongs);
    const auto end = std::find_if(posts.rbegin(), posts.rend(), belongs).base();
    return begin < end ? std::vector<Post>(begin, end) : std::vector<Post>();
}

std::string at(const Post& post) {
    return "frame " + std::to_string(post.frame) + " at " + std::to_string(std::lround(post.time_ms)) + " ms";
}

/// Frames from one to the next in the direction of play, around the loop's end.
long long stepBetween(const Post& one, const Post& next, long long length, bool forward) {
    const long long step = (forward ? next.frame - one.frame : one.frame - next.frame) % length;
    return step < 0 ? step + length : step;
}

std::string checkHeldFrames(const std::vector<Run>& runs, long long length, double speed) {
    const double ticks = 1.0 / std::fabs(speed);
    for (size_t i = 1; i < runs.size(); ++i) {
        if (stepBetween(runs[i - 1].first, runs[i].first, length, speed > 0.0) != 1 % length) {
            return at(runs[i].first) + " does not follow " + at(runs[i - 1].first);
        }
        const bool last = i + 1 == runs.size();
        if (static_cast<double>(runs[i].ticks) > std::ceil(ticks) ||
            (!last && static_cast<double>(runs[i].ticks) < std::floor(ticks))) {
            return at(runs[i].first) + " was due for " + std::to_string(runs[i].ticks) +
                   " ticks instead of " + numberText(ticks);
        }
    }
    std::set<long long> shown;
    for (const Run& run : runs) {
        shown.insert(run.first.frame);
    }
    if (static_cast<long long>(shown.size()) < length) {
        return "only " + std::to_string(shown.size()) + " of " + std::to_string(length) +
               " frames were shown";
    }
    return {};
}

std::string checkSkippedFrames(const std::vector<Post>& posts, long long length, double speed) {
    const double step = std::fabs(speed);
    const long long smallest = static_cast<long long>(std::floor(step)) % length;
    const long long largest = static_cast<long long>(std::ceil(step)) % length;
    for (size_t i = 1; i < posts.size(); ++i) {
        const long long actual = stepBetween(posts[i - 1], posts[i], length, speed > 0.0);
        if (actual != smallest && actual != largest) {
            return at(posts[i]) + " does not follow " + at(posts[i - 1]) + " at speed " + numberText(speed);
        }
    }
    return {};
}

} // namespace

std::string PlayWatch::checkLoop(long long from, long long to, double speed) const {
    if (from > to) {
        std::swap(from, to);
    }
    const std::vector<Post> replay = withoutSurroundings(posts_, from, to);
    if (replay.size() < 2) {
        return "nothing of the range was shown";
    }
    for (const Post& post : replay) {
        if (post.frame < from || post.frame > to) {
            return at(post) + " lies outside of the range";
        }
    }
    const long long length = to - from + 1;
    const std::vector<Run> runs = runsOf(replay);
    if (speed == 0.0) {
        return runs.size() == 1 ? "" : at(runs[1].first) + " was shown although the speed is 0";
    }
    return std::fabs(speed) <= 1.0 ? checkHeldFrames(runs, length, speed)
                                   : checkSkippedFrames(replay, length, speed);
}

} // namespace host
