/// @file
/// What the simulated camera is to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devices {

/// The camera's stream and its faults, from a text file of `key = value` lines; a `#` at a line's start
/// or after a blank begins a comment.
///
/// Frames are counted by the camera's deliveries: 0 is the first frame period after the start, and a period
/// whose frame is dropped counts as well. The losses come in the order of their lines, the next one counted
/// from the start that follows the one before.
///
/// | key | value | meaning |
/// |---|---|---|
/// | stream | path | the raw .dv file, relative to the text file |
/// | speed | number | times real time, 0.001 to 1000 |
/// | burst | count | so many frames at once, then so many periods' pause; 1 to 1000 |
/// | stall | frame:ms | pause before this frame; repeatable |
/// | drop | from-to | these frames are skipped, their time passes; repeatable |
/// | lose | frame:ms:stream | the device is gone when this frame is due, and back so much later (left out: |
/// | | | never) with this stream (left out: the same); repeatable |
/// | open | ms | making the camera takes so long when it was lost before |
/// | scenario | text | another one than before begins the losses anew within one process |
/// | log | path | where every delivered frame gets its line, relative to the text file |
/// | devices | count | how many cameras are registered; 1 to 16 |
struct camera_config {
    struct stall {
        uint64_t frame;
        uint32_t ms;
    };
    struct range {
        uint64_t from;
        uint64_t to; ///< inclusive
    };

    struct loss {
        uint64_t frame;
        std::optional<uint32_t> return_ms;
        std::wstring stream; ///< full path, or empty
    };

    std::wstring stream; ///< full path, or empty
    double speed = 1;
    uint32_t burst = 1;
    std::vector<stall> stalls;
    std::vector<range> drops;
    std::vector<loss> losses;
    uint32_t open_ms = 0;
    std::string scenario;
    std::wstring log; ///< full path, or empty
    uint32_t devices = 1;

    /// Where the text file is: named by the environment variable MARVO_CAMERA, else "camera.txt" beside this
    /// module.
    static std::wstring location();
    /// Reads a text file (UTF-8). One that cannot be read gives the defaults and a line on stderr.
    static camera_config load(const std::wstring& path);
    /// Reads a text. Lines that cannot be understood are named on stderr and left out. `folder` is what paths
    /// are relative to, `name` what the messages call the text.
    static camera_config parse(std::string_view text, const std::wstring& folder, const char* name);

    /// Whether a frame is to be skipped.
    bool drops_frame(uint64_t frame) const;
    /// The pause before a frame in ms; 0 is none.
    uint64_t stall_before(uint64_t frame) const;
    /// The full path of the stream that is played after so many losses, or empty.
    const std::wstring& stream_after(size_t lost) const;

private:
    bool set(std::string_view key, std::string_view value, const std::wstring& folder);
};

} // namespace devices
