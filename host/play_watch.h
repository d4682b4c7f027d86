/// @file
/// Recording the frames that a replay shows, and checking them.
#pragma once

#include <string>
#include <vector>

namespace host {

/// One progress message: which frame was due in a tick of the play clock.
struct Post {
    double time_ms;  ///< since the host's start
    long long frame; ///< the frame's number
    bool replaying;  ///< whether a range was being replayed
};

/// A list of posts in the order of arrival. Used on the host's one thread.
class PlayWatch {
public:
    /// Adds a post at the end.
    void add(const Post& post) { posts_.push_back(post); }
    /// All posts so far.
    const std::vector<Post>& posts() const { return posts_; }

    /// Checks that the posts are the frames `from` to `to` replayed in a loop at `speed`: the next frame in
    /// the direction of play after each one, and each for as many ticks as the speed asks (its fraction makes
    /// that vary by one). What came before and after the replay is left out, and the first and the last frame
    /// may have any share of their ticks. At up to full speed the whole range must have been shown. Empty
    /// when all is well, else what is wrong and when.
    std::string checkLoop(long long from, long long to, double speed) const;

private:
    std::vector<Post> posts_;
};

} // namespace host
