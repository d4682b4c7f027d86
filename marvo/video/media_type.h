/// @file
/// Media types and the DV frame geometry.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"
#include "marvo/dv/dv_system.h"

#include <dvdmedia.h>

namespace vvideo {

/// Bytes of one 25 Mbit/s DV frame of 625/50.
constexpr unsigned long palFrameSize = vdv::palFrameBytes;
/// As above, for 525/60.
constexpr unsigned long ntscFrameSize = vdv::ntscFrameBytes;

/// Zeroes `mt` and, when `cbFormat` is not 0, gives it a zeroed format block of that many bytes. What `mt`
/// held before is not freed. Without memory it has no block and `cbFormat` 0.
///
/// Format blocks come from the process heap. COM's task allocator draws from the same heap, so a foreign
/// filter that frees a block of ours with `CoTaskMemFree` does no harm, and we may free one of its blocks.
MARVO_API void initMediaType(_AMMediaType& mt, unsigned long cbFormat);

/// Copies every member of `*src`, the format block into a new block of its own; nothing happens when `src` is
/// null. The block that `dst` held before is not freed, and `pUnk` is copied without a reference.
MARVO_API void copyMediaType(_AMMediaType& dst, const _AMMediaType* src);

/// Frees the format block and zeroes `mt`.
MARVO_API void clearMediaType(_AMMediaType& mt);

/// A media type that owns its format block. It is exactly one `AM_MEDIA_TYPE` and may be passed wherever one
/// is expected. Not thread-safe.
///
/// The builders do not free the block held before: they are for a new or cleared object. `pUnk` is never
/// counted.
///
/// | system        | frame size | per frame (100 ns) | `initVideoType` | `initDVType` | `height()`, DV |
/// |---------------|------------|--------------------|-----------------|--------------|----------------|
/// | 525/60 (NTSC) | 120000     | 333333             | 720 x 480       | 720 x 486    | 488            |
/// | 625/50 (PAL)  | 144000     | 400000             | 720 x 576       | 720 x 576    | 576            |
///
/// Deliberate: the three NTSC heights differ, since each is what the respective partner expects.
class MARVO_API dvMediaType : public _AMMediaType {
public:
    /// All zero, without a format block.
    dvMediaType() { initMediaType(*this, 0); }
    /// A copy with a format block of its own.
    dvMediaType(const dvMediaType& source) : dvMediaType(&source) {}
    /// A copy of `*source`; all zero for null.
    dvMediaType(const _AMMediaType* source);
    ~dvMediaType() { clearMediaType(*this); }

    /// Replaces the type by a copy of `*source` (all zero for null).
    _AMMediaType* operator=(const _AMMediaType* source);
    /// Replaces the type by a copy.
    _AMMediaType* operator=(const dvMediaType& source) { return *this = &source; }

    /// The same object, as system calls take it.
    operator _AMMediaType*() { return this; }
    /// The same object, for calls that only read it. Deliberate: a constant type gives a constant pointer, so
    /// that no call can replace or free the format block of an object that must not change. Copy the type for
    /// a call that wants to write.
    operator const _AMMediaType*() const { return this; }
    /// The members of the structure.
    _AMMediaType* operator->() { return this; }
    /// The members of the structure, to be read.
    const _AMMediaType* operator->() const { return this; }

    /// A type with a format block of `cbFormat` bytes, copied from `format` unless that is null; everything
    /// else 0.
    void initType(unsigned long cbFormat, const void* format);
    /// DV as video, for frames of `frameSize` bytes. `timePerFrame` in 100 ns; all ones means the default:
    /// 333333 for a size of exactly 120000, else 400000. The sample size is 1 and not the frame size,
    /// deliberately.
    void initVideoType(unsigned long frameSize, unsigned long timePerFrame);
    /// Uncompressed video. `bitCount` -2 means UYVY, -1 YUY2, 24 RGB24, any other RGB32; the YUV codes give a
    /// sample size of 0, and so does a picture of 4 GB or more. `timePerFrame` in 100 ns; a negative one
    /// means the default: 400000 above 486 lines, else 333333.
    void initVideoType(unsigned long width, unsigned long height, int bitCount, int timePerFrame);
    /// DV as video or as an interleaved stream. Deliberate: the video form takes sizes above 120000 for PAL,
    /// the interleaved form only 144000 exactly.
    void initDVType(unsigned long frameSize, bool video);
    /// PCM audio.
    void initAudioType(int samplesPerSec, int channels, int bitsPerSample);

    // The format block; null when there is none, when it is of another kind or too short for its kind.
    /// The block as video information.
    tagVIDEOINFOHEADER* videoInfo() const;
    /// The block as video information with interlacing.
    tagVIDEOINFOHEADER2* videoInfo2() const;
    /// The block as an audio format.
    tWAVEFORMATEX* waveFormatEx() const;
    /// The block as DV information.
    DVINFO* dvInfo() const;
    /// The picture header within a video block of either kind.
    tagBITMAPINFOHEADER* bmiHeader() const;

    /// Whether the major type is video or interleaved.
    bool isVideo() const;
    /// Whether the major type is audio.
    bool isAudio() const;

    // What the format block tells; 0 when it is of none of the kinds known.
    /// Width in pixels.
    long width() const;
    /// Height in lines.
    long height() const;
    /// Bits per pixel; 0 for DV information.
    long bpp() const;
    /// Bytes per frame.
    unsigned long frameSize() const;
    /// Duration of a frame in 100 ns.
    long long timePerFrame() const;
    /// Sets the duration of a frame in 100 ns; only in a video block.
    void setTimePerFrame(long long time);

private:
    void copyFrom(const _AMMediaType* source);
    template <class Block>
    Block* blockOf(const GUID& kind) const;
    tagVIDEOINFOHEADER* initVideoBlock(unsigned long allocated);
};

} // namespace vvideo
