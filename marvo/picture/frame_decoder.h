/// @file
/// Pictures of DV frames.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/picture/picture.h"

#include <cstddef>
#include <memory>

/// Has the system's DV video decoder make pictures of single frames, in full size and with both fields:
/// stills, thumbnails, a second output. It keeps a small graph of its own with one decoder in it, so that
/// frame after frame takes no longer than the decoder needs; frames of the other system make it build that
/// anew by itself.
///
/// Threads: one at a time. COM is initialised by the caller; on a thread where it is not, it is initialised
/// as multithreaded. The object is best destroyed on the thread that used it.
class MARVO_API dvFrameDecoder {
public:
    /// Nothing is made before the first frame.
    dvFrameDecoder();
    /// Gives the decoder back, as `close`.
    ~dvFrameDecoder();
    dvFrameDecoder(const dvFrameDecoder&) = delete;
    dvFrameDecoder& operator=(const dvFrameDecoder&) = delete;

    /// Makes a picture of a whole DV frame of `bytes` bytes. `picture` may be a new one or one of before,
    /// whose memory is used again. False, with the reason in `explanation` and an empty picture, when these
    /// are no bytes of a DV frame, there is no decoder, it does not take such frames or gives no picture (it
    /// is waited for, at most 5 s); the next call tries again. A damaged frame gives whatever the decoder
    /// makes of it.
    bool decode(const void* frame, std::size_t bytes, dvPicture& picture);

    /// Why the last `decode` failed, as one sentence; empty when it did not. Valid until the next call.
    const wchar_t* explanation() const;

    /// Takes the graph apart and gives the decoder back; the next frame makes another one.
    void close();

private:
    struct Work;
    std::unique_ptr<Work> work_;
};
