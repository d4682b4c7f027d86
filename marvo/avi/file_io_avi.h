/// @file
/// Writer and reader of AVI files with all their structures.
#pragma once

#include "marvo/core/str.h"
#include "marvo/avi/avi_odml_file_info.h"

#include <memory>

class AviReader;
class AviWriter;

/// Writes and reads one video stream in an AVI file with OpenDML extensions, and writes a sound stream beside
/// it when asked to: one object either writes a new file (`create`) or reads an existing one (`open`).
/// Operations return 0 for success or a code, and leave a text that says what went wrong in `lastError`. The
/// layout of the files that are written is in docs/formats.md.
///
/// Not locked: one thread at a time, or the owner's lock.
class MARVO_API FileIOAVI {
public:
    /// What operations return.
    enum Code : int {
        Ok = 0,                ///< nothing has failed
        ShortWrite = 6,        ///< the system took less than was to be written
        WriteFailed = 9,       ///< the system refused a write
        IndexFileNotOpen = 13, ///< the file cannot be opened for reading its index
        NoDescend = 14,        ///< the file lacks the RIFF form, the "movi" list or the index chunk
        NoAscend = 15,         ///< the end of the "movi" list cannot be found
        NoIndexEntry = 16,     ///< an index cannot be read
        Refused = 20,       ///< wrong state, an argument out of range, or a file of a kind that is not read
        Damaged = 21,       ///< a structure that is needed is missing or impossible
        ReadFailed = 22,    ///< a frame cannot be read
        Full = 23,          ///< the super index has no room for another standard index
        SystemRefused = 24, ///< the system does not create or open the file
    };

    /// Codecs by the argument `kind` of `create`.
    enum Kind : unsigned long {
        Uncompressed = 0, ///< "UYVY"; frames of the given maximum, or 701440 bytes
        Dv = 1,           ///< sub-kinds 411 and 420: "dvsd", 422: "dv50"
        Mpeg2 = 2,        ///< "mpg2"; frames of the given maximum, or 0x20000 bytes
    };

    /// What is written.
    struct Video {
        unsigned long kind = Dv;        ///< a member of `Kind`
        unsigned long subKind = 420;    ///< of the kind; see there
        unsigned long width = 720;      ///< pixels
        unsigned long height = 576;     ///< pixels
        bool is625 = true;              ///< 625/50 (25 frames per second), else 525/60 (29.97)
        unsigned long maxFrameSize = 0; ///< bytes, for the kinds that need it
    };

    /// PCM sound that is written beside the video.
    struct Sound {
        unsigned long rate = 48000;       ///< samples per second of each channel
        unsigned channels = 2;            ///< up to 16
        unsigned bits = 16;               ///< of a sample: 8, 16, 24 or 32
        unsigned long mostSamples = 4096; ///< of each channel, the most that stand behind one frame
        /// Which loudspeakers they are for, as the system's WAVEFORMATEXTENSIBLE has it, of more than two
        /// channels; 0: not said.
        unsigned long channelMask = 0;
        /// What the stream's header gives as its rate, `clockRate / clockScale` samples per second, if that
        /// is not `rate`; 0: it is.
        unsigned long clockRate = 0;
        unsigned long clockScale = 0; ///< see there
    };

    /// How an existing file is read.
    enum class Trust {
        Indexes, ///< by its indexes as far as they are sound, and behind their end by walking the chunks
        Nothing, ///< by searching the whole file for frames, also behind damage; slow
    };

    /// Where a frame stands.
    struct FramePosition {
        unsigned long long offset = 0; ///< bytes from the start of the file to the frame's chunk header
        unsigned long size = 0;        ///< bytes of the frame's data
    };

    FileIOAVI();

    /// As `close`.
    ~FileIOAVI();

    FileIOAVI(const FileIOAVI&) = delete;
    FileIOAVI& operator=(const FileIOAVI&) = delete;

    /// Creates `name` for writing, replacing a file of that name; others may read it meanwhile. With
    /// `unbuffered` every write is a whole number of the volume's sectors and passes the system's cache by,
    /// and buffers must be 4096-aligned. Refused for a null name, an unknown codec and an object that is in
    /// use, whose file stays as it is.
    int create(const wchar_t* name, const Video& video, bool unbuffered);

    /// The same with a sound stream. Refused as well for sound that is not as it is said there.
    int create(const wchar_t* name, const Video& video, const Sound& sound, bool unbuffered);

    /// Opens an existing file for reading; its writer may have it open as well. Files of other writers are
    /// read when they have a DV video stream of its own (type 2); an interleaved stream (type 1) is refused.
    int open(const wchar_t* name, Trust trust = Trust::Indexes);

    /// Finishes a file that was created (sizes, indexes, frame counts) and closes. 0 when nothing was open;
    /// otherwise what the last write came to. `lastError` stays.
    int close();

    /// Whether a file is created or open.
    bool opened() const { return created() || reading(); }
    /// Whether a file is open for writing.
    bool created() const { return writer_ != nullptr; }
    /// Whether a file is open for reading.
    bool reading() const { return reader_ != nullptr; }

    /// Appends one frame of `frameSize` bytes, which stands in `buffer` behind 8 bytes of whatever content;
    /// these and the bytes behind the frame, up to `bufferSize`, are overwritten: `buffer` is the whole slot
    /// as it goes to disk. `bufferSize` is at least `slotSize`.
    int writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize);

    /// The same for a file with a sound stream: behind the frame goes the sound of its time, `soundBytes`
    /// bytes, a whole number of samples of all channels and at most `Sound::mostSamples` of them; 0 for none.
    int writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize, const void* sound,
                   unsigned long soundBytes);

    /// Reads frame `frame` into `buffer`: its chunk header, then at offset 8 its data. Refused when
    /// `bufferSize` is less than 8 plus the frame's size; bytes behind the frame are undefined.
    int readFrame(char* buffer, unsigned long bufferSize, unsigned long frame);

    /// Makes `frame`, modulo the number of frames, the current one; on a file without frames nothing happens.
    void seekFrame(unsigned long frame);

    /// The current frame: set by `seekFrame`, one further after each `readFrame` and `writeFrame` that
    /// succeeded.
    unsigned long frame() const { return frame_; }

    /// Looks for frames that were written since the file was opened. 0 also when there are none.
    int refresh();

    /// Where frame `frame` stands; false when there is no such frame.
    bool framePosition(unsigned long frame, FramePosition& position) const;

    /// Frames that can be read, or were written so far.
    unsigned long frames() const { return info_.totalFrames; }
    /// Bytes of one frame's data (of the largest frame, in a file of another writer); 0 when nothing is open.
    unsigned long dataFrameSize() const;
    /// Bytes of one frame's slot with chunk header and padding (8 plus the largest frame, when reading); 0
    /// when nothing is open.
    unsigned long slotSize() const;
    /// Average bytes of video data per second; 0 when nothing is open.
    unsigned long dataRate() const;
    /// Bytes per sector of the file's volume, 1 when unknown.
    unsigned long sectorSize() const;

    /// What is known of the file's OpenDML structures.
    const AVI_ODMLFileInfo& info() const { return info_; }
    /// Why the last operation failed, in the words of the system or of this class, at most 79 characters;
    /// empty when none has failed since the file was opened. Owned by the object.
    const wchar_t* lastError() const { return lastError_; }
    /// The system's number for why the last write failed, also where the system did not refuse it; of a file
    /// that is read, for the `readFrame` that failed last: of the disk, ERROR_HANDLE_EOF for a frame that is
    /// not there as a whole, ERROR_INVALID_DATA when something else stands there. 0 before.
    unsigned long systemError() const;
    /// Bytes that are free on the volume of the file being written; all ones when it does not tell.
    unsigned long long freeBytes() const;

private:
    int done(int code, const wchar_t* text);
    int failed(int code, const AviWriter& writer);
    int createWith(const wchar_t* name, const Video& video, const Sound* sound, bool unbuffered);
    template <class Open>
    int withMemory(Open open);

    std::unique_ptr<AviWriter> writer_;
    std::unique_ptr<AviReader> reader_;
    AVI_ODMLFileInfo info_;
    unsigned long frame_ = 0;
    wchar_t lastError_[80] = L"";
    unsigned long systemError_ = 0;
};
