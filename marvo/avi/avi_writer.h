/// @file
/// The writing half of `FileIOAVI`.
#pragma once

#include "marvo/avi/avi_header_writer.h"
#include "marvo/avi/avi_index_writer.h"
#include "marvo/avi/avi_output.h"
#include "marvo/avi/file_io_avi.h"

#include <memory>

/// The writing half of `FileIOAVI`: appends frames, closes index chunks and pieces when they are full, and
/// keeps the headers on disk true to what stands behind them.
///
/// Everything is written at the end of the file, and counts only when it is there; then, at least once per
/// second of video and whenever a piece ends, the header block is written over. So a file that nobody closed
/// holds every frame that was written, and headers that are at most a second behind. A write that fails
/// changes nothing: the next one goes to the same place. The same holds when the writing thread is killed in
/// it (see `AviOutput`), and `close` then finishes the file.
///
/// Not locked: one thread at a time.
class AviWriter {
public:
    /// Where one structure ends and the next begins.
    struct Limits {
        /// Bytes that a RIFF piece does not exceed, everything included, unless its first frame does already.
        unsigned long long pieceBytes = 0x40000000;
        /// Frames per standard index chunk: as many as its 16384 bytes hold.
        unsigned long standardEntries = 2044;
        /// Standard index chunks in the file: as many as the super index holds.
        unsigned long superEntries = AviHeaderWriter::superIndexRoom;
    };

    AviWriter();
    /// Writes to `output` instead of a file of its own, within `limits`.
    AviWriter(std::unique_ptr<AviOutput> output, const Limits& limits);

    /// As `FileIOAVI::create`; fills `info`, which must outlive the writer and is kept current.
    /// Without sound when `sound` is null.
    int create(const wchar_t* name, const FileIOAVI::Video& video, const FileIOAVI::Sound* sound,
               bool unbuffered, AVI_ODMLFileInfo& info);

    /// As `FileIOAVI::writeFrame`.
    int writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize,
                   const void* sound = nullptr, unsigned long soundBytes = 0);

    /// As `FileIOAVI::close`.
    int close();

    unsigned long dataFrameSize() const { return format_.frameSize; }
    unsigned long slotSize() const { return slotSize_; }
    unsigned long dataRate() const { return format_.dataRate(); }
    unsigned long sectorSize() const { return sectorSize_; }

    /// Why the last operation failed.
    const wchar_t* error() const { return error_; }
    /// The system's number for that, also where it was not the system that refused.
    unsigned long systemError() const { return systemError_; }
    /// As `FileIOAVI::freeBytes`.
    unsigned long long freeBytes() const { return output_->freeBytes(); }

private:
    int failed(int code);
    int refused(int code, const wchar_t* text, unsigned long systemError = ERROR_INVALID_PARAMETER);
    bool reserveMemory();
    unsigned long slotFor(unsigned long frameSize, unsigned long soundBytes) const;
    void fillSlot(char* buffer, unsigned long frameSize, const void* sound, unsigned long soundBytes,
                  unsigned long slot) const;
    const void* alignedSlot(const char* buffer, unsigned long slot);
    int makeRoom(unsigned long slot);
    bool fitsPiece(unsigned long slot) const;
    unsigned long long closingBytes(unsigned long frames) const;
    unsigned long framesOfRoom(unsigned long slot) const;
    int writeStandardIndexes();
    int writeStandardIndex(AviStream stream, std::uint32_t duration);
    int finishPiece();
    int beginPiece();
    int writeHeaders();
    void countFrame(unsigned long frameSize, unsigned long soundBytes, unsigned long slot);
    void countChunk(AviStream stream, unsigned long long offset, unsigned long bytes);
    bool firstPiece() const { return pieceBegin_ == 0; }

    std::unique_ptr<AviOutput> output_;
    const Limits limits_;
    AviFormat format_{};
    AviHeaderWriter headers_;
    AviIndexWriter indexes_;
    AVI_ODMLFileInfo* info_ = nullptr;
    bool unbuffered_ = false;
    unsigned long sectorSize_ = 1;
    /// Multiple at which frames of a piece begin and a piece ends.
    unsigned long alignment_ = 0;
    unsigned long slotSize_ = 0;
    SectorBuffer alignedSlot_;

    bool pieceOpen_ = false;
    unsigned long long pieceBegin_ = 0;
    unsigned long long moviEnd_ = 0;
    unsigned long long end_ = 0;
    unsigned long pieceFrames_ = 0;
    unsigned long long samples_ = 0;        ///< of each channel
    unsigned long long indexedSamples_ = 0; ///< those that the sound's standard index chunks name

    unsigned long framesPerUpdate_ = 1;
    unsigned long framesSinceUpdate_ = 0;
    bool headersStale_ = false;
    unsigned long framesUntilSpaceCheck_ = 0;
    const wchar_t* error_ = L"";
    unsigned long systemError_ = ERROR_SUCCESS;
};
