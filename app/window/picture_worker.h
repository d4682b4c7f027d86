/// @file
/// Pictures of single frames, made beside the window.
#pragma once

#include "app/window/frame_source.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace app {

/// What a picture is for. Of each kind but thumbnails only the newest wish counts.
enum class PictureUse { still, hover, thumbnail };

/// Makes pictures of frames on a thread of its own, in the order of their wishes, and has a window told when
/// one is there.
class PictureWorker {
public:
    /// A picture that was wished for.
    struct Result {
        PictureUse use;
        FrameAddress address;
        dvPicture picture; ///< of width 0: it could not be made
    };

    /// `message` is posted to `window` for each picture; it then calls `take`.
    PictureWorker(HWND window, UINT message);
    PictureWorker(const PictureWorker&) = delete;
    PictureWorker& operator=(const PictureWorker&) = delete;
    ~PictureWorker();

    /// Wishes for a picture. Those for stills come first, thumbnails last and small.
    void wish(PictureUse use, const FrameAddress& address);
    /// The next picture; false when there is none.
    bool take(Result& result);

private:
    struct Wish {
        PictureUse use;
        FrameAddress address;
    };

    void run();
    void make(const Wish& wish, Result& result);

    HWND window_;
    UINT message_;
    std::mutex lock_;
    std::condition_variable news_;
    std::deque<Wish> wishes_;
    std::deque<Result> results_;
    bool ending_ = false;
    // The thread's own.
    FrameSource source_;
    dvFrameDecoder decoder_;
    std::vector<unsigned char> bytes_;
    std::thread thread_;
};

/// The picture made smaller by a whole number, so that it is at most `width` pixels wide.
dvPicture shrunk(const dvPicture& picture, unsigned width);

} // namespace app
