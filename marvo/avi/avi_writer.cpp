#include "marvo/avi/avi_writer.h"

#include "marvo/avi/riff.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t frameTag = riff::fourcc("00dc");
constexpr std::uint32_t soundTag = riff::fourcc("01wb");
constexpr unsigned long headBytes = sizeof(riff::ChunkHeader);

/// Frames begin at a multiple of this where the sector size is unknown, or none that a disk has.
constexpr unsigned long usualSector = 4096;
constexpr unsigned long smallestSector = 512;

/// Whether the file can be laid out in sectors of that size: the index chunks are whole sectors then.
constexpr bool isUsableSector(unsigned long bytes) {
    return bytes >= smallestSector && bytes <= AviHeaderWriter::indexChunkSize && (bytes & (bytes - 1)) == 0;
}

/// Bytes of a chunk with so much data; 0 for a sound chunk that is left out.
constexpr unsigned long chunkBytes(unsigned long bytes) {
    return bytes != 0 ? static_cast<unsigned long>(headBytes + riff::padded(bytes)) : 0;
}

/// Writes a chunk's header at `to`, puts the byte of padding behind its data, and returns where it ends.
char* makeChunk(char* to, std::uint32_t id, unsigned long bytes) {
    const riff::ChunkHeader header{id, static_cast<std::uint32_t>(bytes)};
    std::memcpy(to, &header, sizeof(header));
    std::memset(to + headBytes + bytes, 0, riff::padded(bytes) - bytes);
    return to + headBytes + riff::padded(bytes);
}

} // namespace

AviWriter::AviWriter() : AviWriter(std::make_unique<AviOutput>(), Limits()) {}

AviWriter::AviWriter(std::unique_ptr<AviOutput> output, const Limits& limits)
    : output_(std::move(output)), limits_(limits) {}

int AviWriter::refused(int code, const wchar_t* text, unsigned long systemError) {
    error_ = text;
    systemError_ = systemError;
    return code;
}

int AviWriter::failed(int code) {
    if (code != FileIOAVI::Ok) {
        error_ = output_->error();
        systemError_ = output_->systemError();
    }
    return code;
}

int AviWriter::create(const wchar_t* name, const FileIOAVI::Video& video, const FileIOAVI::Sound* sound,
                      bool unbuffered, AVI_ODMLFileInfo& info) {
    const auto format = AviFormat::of(video, sound);
    if (!format) {
        return refused(FileIOAVI::Refused, L"a codec, a picture size or sound that cannot be written\n");
    }
    format_ = *format;
    const unsigned long sector = output_->sectorSize(name);
    sectorSize_ = sector != 0 ? sector : 1;
    alignment_ = isUsableSector(sector) ? sector : usualSector;
    unbuffered_ = unbuffered && alignment_ == sector;
    slotSize_ = slotFor(format_.frameSize, format_.mostSoundBytes());
    if (!reserveMemory()) {
        return refused(FileIOAVI::SystemRefused, L"there is not enough memory\n", ERROR_NOT_ENOUGH_MEMORY);
    }
    if (const int code = output_->create(name, unbuffered_)) {
        return failed(code);
    }
    moviEnd_ = end_ = headers_.dataOffset();
    if (const int code = output_->write(0, headers_.fileBlock(), headers_.dataOffset())) {
        output_->discard();
        return failed(code);
    }
    pieceOpen_ = true;
    framesPerUpdate_ = format_.rate / format_.scale;
    info = {};
    // Nothing may have to grow while frames are written.
    info.indexPositions.reserve(limits_.superEntries);
    info.piecePositions.reserve(limits_.superEntries);
    info.pieces = 1;
    info.piecePositions.push_back(0);
    info.streams = format_.streams();
    info.audioStreams = format_.streams() - 1;
    info_ = &info;
    return FileIOAVI::Ok;
}

bool AviWriter::reserveMemory() {
    const unsigned long long slots = limits_.pieceBytes / slotFor(format_.frameSize, 0) + 1;
    return headers_.init(format_, alignment_) &&
           indexes_.init(format_.streams(), AviHeaderWriter::indexChunkSize, limits_.standardEntries,
                         static_cast<std::uint32_t>(slots * format_.streams()), alignment_);
}

/// Bytes that a frame and its sound take in the file. Unbuffered, that is a whole number of sectors, in which
/// either nothing or at least a chunk header is left behind them.
unsigned long AviWriter::slotFor(unsigned long frameSize, unsigned long soundBytes) const {
    const unsigned long chunks = chunkBytes(frameSize) + chunkBytes(soundBytes);
    if (!unbuffered_) {
        return chunks;
    }
    const unsigned long most = chunkBytes(format_.frameSize) + chunkBytes(soundBytes);
    const unsigned long slot = (most + alignment_ - 1) & ~(alignment_ - 1);
    const bool fits = slot == chunks || slot >= chunks + headBytes;
    return fits ? slot : slot + alignment_;
}

void AviWriter::fillSlot(char* buffer, unsigned long frameSize, const void* sound, unsigned long soundBytes,
                         unsigned long slot) const {
    char* end = makeChunk(buffer, frameTag, frameSize);
    if (soundBytes != 0) {
        std::memcpy(end + headBytes, sound, soundBytes);
        end = makeChunk(end, soundTag, soundBytes);
    }
    const auto left = static_cast<unsigned long>(buffer + slot - end);
    if (left != 0) {
        std::memset(end, 0, left);
        makeChunk(end, riff::fourcc("JUNK"), left - headBytes);
    }
}

/// `buffer`, or a copy of it where the disk would refuse its place in memory; null when there is no memory.
const void* AviWriter::alignedSlot(const char* buffer, unsigned long slot) {
    if (!unbuffered_ || reinterpret_cast<std::uintptr_t>(buffer) % alignment_ == 0) {
        return buffer;
    }
    if (!alignedSlot_) {
        alignedSlot_ = allocSectors(slotSize_);
    }
    if (alignedSlot_) {
        std::memcpy(alignedSlot_.get(), buffer, slot);
    }
    return alignedSlot_.get();
}

int AviWriter::writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize, const void* sound,
                          unsigned long soundBytes) {
    if (frameSize == 0 || frameSize > format_.frameSize ||
        (format_.fixedSize && frameSize != format_.frameSize)) {
        return refused(FileIOAVI::Refused, L"the frame has not the size of the file's frames\n");
    }
    if (soundBytes > format_.mostSoundBytes() ||
        (soundBytes != 0 && (!sound || soundBytes % format_.blockBytes() != 0))) {
        return refused(FileIOAVI::Refused, L"the sound is not what the file takes behind a frame\n");
    }
    const unsigned long slot = slotFor(frameSize, soundBytes);
    if (bufferSize < slot) {
        return refused(FileIOAVI::Refused, L"the buffer is smaller than the frame's place in the file\n");
    }
    if (const int code = makeRoom(slot)) {
        return code;
    }
    fillSlot(buffer, frameSize, sound, soundBytes, slot);
    const void* data = alignedSlot(buffer, slot);
    if (!data) {
        return refused(FileIOAVI::Refused, L"there is not enough memory\n", ERROR_NOT_ENOUGH_MEMORY);
    }
    if (const int code = output_->write(end_, data, slot)) {
        return failed(code);
    }
    countFrame(frameSize, soundBytes, slot);
    if (framesSinceUpdate_ >= framesPerUpdate_) {
        // The frame is written; when the headers are not, the next frame tries again.
        writeHeaders();
    }
    return FileIOAVI::Ok;
}

void AviWriter::countFrame(unsigned long frameSize, unsigned long soundBytes, unsigned long slot) {
    countChunk(AviStream::video, end_, frameSize);
    if (soundBytes != 0) {
        countChunk(AviStream::sound, end_ + chunkBytes(frameSize), soundBytes);
        samples_ += soundBytes / format_.blockBytes();
    }
    if (firstPiece()) {
        ++info_->firstPieceFrames;
        info_->legacyEntries = indexes_.legacyEntries();
    }
    ++pieceFrames_;
    ++info_->totalFrames;
    end_ += slot;
    moviEnd_ = end_;
    headersStale_ = true;
    ++framesSinceUpdate_;
    --framesUntilSpaceCheck_;
}

void AviWriter::countChunk(AviStream stream, unsigned long long offset, unsigned long bytes) {
    indexes_.add(stream, offset, bytes, pieceBegin_);
    if (firstPiece()) {
        const unsigned long long listType = headers_.dataOffset() - sizeof(std::uint32_t);
        indexes_.addLegacy(stream, static_cast<std::uint32_t>(offset - listType), bytes);
    }
}

/// Sees to it that the frame may be written at the end: that the piece and the standard index have room for
/// it.
int AviWriter::makeRoom(unsigned long slot) {
    if (pieceOpen_ && pieceFrames_ != 0 && !fitsPiece(slot)) {
        if (const int code = finishPiece()) {
            return code;
        }
    }
    if (indexes_.standardFull()) {
        if (const int code = writeStandardIndexes()) {
            return code;
        }
    }
    if (indexes_.standardEntries(AviStream::video) == 0 && headers_.indexes() >= limits_.superEntries) {
        const int code = headersStale_ ? writeHeaders() : static_cast<int>(FileIOAVI::Ok);
        return code != FileIOAVI::Ok
                   ? code
                   : refused(FileIOAVI::Full, L"the super index is full\n", ERROR_FILE_TOO_LARGE);
    }
    if (framesUntilSpaceCheck_ == 0) {
        framesUntilSpaceCheck_ = framesOfRoom(slot);
        if (framesUntilSpaceCheck_ == 0) {
            return failed(FileIOAVI::WriteFailed);
        }
    }
    return pieceOpen_ ? static_cast<int>(FileIOAVI::Ok) : beginPiece();
}

/// Frames that may be written before the free space of the disk is asked for again, so that there is always
/// room for finishing the file: one second, or ten while the disk is far from full, because asking takes
/// long; 0 when it is full.
unsigned long AviWriter::framesOfRoom(unsigned long slot) const {
    for (const unsigned long seconds : {10ul, 1ul}) {
        // Twice as much, because others write to the disk as well.
        const unsigned long frames = seconds * framesPerUpdate_;
        if (output_->hasRoom(closingBytes(frames) + 2ull * frames * slot)) {
            return frames;
        }
    }
    return 0;
}

bool AviWriter::fitsPiece(unsigned long slot) const {
    const unsigned long long size =
        end_ - pieceBegin_ + slot +
        AviHeaderWriter::indexChunkSize * format_.streams() * (indexes_.standardFull() ? 2ull : 1ull) +
        indexes_.tailBytes(firstPiece() ? indexes_.legacyEntries() + format_.streams() : 0);
    return size <= limits_.pieceBytes && !(firstPiece() && indexes_.legacyFull());
}

/// The most bytes that finishing the open piece takes after `frames` more frames, and beginning the next one.
unsigned long long AviWriter::closingBytes(unsigned long frames) const {
    const unsigned long legacy = firstPiece() ? indexes_.legacyEntries() + frames * format_.streams() : 0;
    return 2ull * AviHeaderWriter::indexChunkSize * format_.streams() + indexes_.tailBytes(legacy) +
           headers_.pieceBlockSize();
}

/// Writes the standard indexes that have been begun. The video's comes last, since readers look behind it for
/// what follows.
int AviWriter::writeStandardIndexes() {
    const auto samples = static_cast<std::uint32_t>(samples_ - indexedSamples_);
    if (const int code = writeStandardIndex(AviStream::sound, samples)) {
        return code;
    }
    indexedSamples_ = samples_;
    return writeStandardIndex(AviStream::video, indexes_.standardEntries(AviStream::video));
}

int AviWriter::writeStandardIndex(AviStream stream, std::uint32_t duration) {
    if (indexes_.standardEntries(stream) == 0) {
        return FileIOAVI::Ok;
    }
    const void* const chunk = indexes_.standardChunk(stream);
    if (const int code = output_->write(end_, chunk, AviHeaderWriter::indexChunkSize)) {
        return failed(code);
    }
    headers_.addIndex(stream, end_, duration);
    if (stream == AviStream::video) {
        info_->indexPositions.push_back(end_);
    }
    indexes_.clearStandard(stream);
    end_ += AviHeaderWriter::indexChunkSize;
    moviEnd_ = end_;
    headersStale_ = true;
    return FileIOAVI::Ok;
}

int AviWriter::finishPiece() {
    if (const int code = writeStandardIndexes()) {
        return code;
    }
    const std::uint32_t bytes = indexes_.makeTail(end_, firstPiece());
    if (bytes != 0) {
        if (const int code = output_->write(end_, indexes_.tail(), bytes)) {
            return failed(code);
        }
    }
    end_ += bytes;
    pieceOpen_ = false;
    headersStale_ = true;
    return FileIOAVI::Ok;
}

int AviWriter::beginPiece() {
    // The block of the piece before is needed for the new piece.
    if (const int code = writeHeaders()) {
        return code;
    }
    headers_.setSizes(false, headers_.pieceBlockSize(), headers_.pieceBlockSize());
    if (const int code = output_->write(end_, headers_.pieceBlock(), headers_.pieceBlockSize())) {
        return failed(code);
    }
    pieceBegin_ = end_;
    end_ += headers_.pieceBlockSize();
    moviEnd_ = end_;
    pieceFrames_ = 0;
    pieceOpen_ = true;
    ++info_->pieces;
    info_->piecePositions.push_back(pieceBegin_);
    return FileIOAVI::Ok;
}

int AviWriter::writeHeaders() {
    headers_.setSizes(firstPiece(), moviEnd_ - pieceBegin_, end_ - pieceBegin_);
    headers_.setFrames(info_->firstPieceFrames, info_->totalFrames);
    if (format_.sound) {
        headers_.setSamples(samples_);
    }
    if (!firstPiece()) {
        if (const int code = output_->write(pieceBegin_, headers_.pieceBlock(), headers_.pieceBlockSize())) {
            return failed(code);
        }
    }
    if (const int code = output_->write(0, headers_.fileBlock(), headers_.dataOffset())) {
        return failed(code);
    }
    info_->headerTotalFrames = info_->totalFrames;
    framesSinceUpdate_ = 0;
    headersStale_ = false;
    return FileIOAVI::Ok;
}

int AviWriter::close() {
    int code = pieceOpen_ ? finishPiece() : static_cast<int>(FileIOAVI::Ok);
    if (headersStale_) {
        const int headers = writeHeaders();
        code = code != FileIOAVI::Ok ? code : headers;
    }
    output_->close(end_);
    return code;
}
