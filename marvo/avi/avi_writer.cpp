#include "marvo/avi/avi_writer.h"

#include "marvo/avi/riff.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t frameTag = riff::fourcc("00dc");
constexpr unsigned long headBytes = sizeof(riff::ChunkHeader);

/// Frames begin at a multiple of this where the sector size is unknown, or none that a disk has.
constexpr unsigned long usualSector = 4096;
constexpr unsigned long smallestSector = 512;

/// Whether the file can be laid out in sectors of that size: the index chunks are whole sectors then.
constexpr bool isUsableSector(unsigned long bytes) {
    return bytes >= smallestSector && bytes <= AviHeaderWriter::indexChunkSize && (bytes & (bytes - 1)) == 0;
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

int AviWriter::create(const wchar_t* name, const FileIOAVI::Video& video, bool unbuffered,
                      AVI_ODMLFileInfo& info) {
    const auto format = AviFormat::of(video);
    if (!format) {
        return refused(FileIOAVI::Refused, L"a codec or a picture size that cannot be written\n");
    }
    format_ = *format;
    const unsigned long sector = output_->sectorSize(name);
    sectorSize_ = sector != 0 ? sector : 1;
    alignment_ = isUsableSector(sector) ? sector : usualSector;
    unbuffered_ = unbuffered && alignment_ == sector;
    slotSize_ = slotFor(format_.frameSize);
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
    info.streams = 1;
    info_ = &info;
    return FileIOAVI::Ok;
}

bool AviWriter::reserveMemory() {
    const unsigned long long slots = limits_.pieceBytes / slotSize_ + 1;
    return headers_.init(format_, alignment_) &&
           indexes_.init(AviHeaderWriter::indexChunkSize, limits_.standardEntries,
                         static_cast<std::uint32_t>(slots), alignment_);
}

/// Bytes that a frame takes in the file. Unbuffered, that is a whole number of sectors, in which either
/// nothing or at least a chunk header is left behind the frame.
unsigned long AviWriter::slotFor(unsigned long frameSize) const {
    const auto chunk = static_cast<unsigned long>(headBytes + riff::padded(frameSize));
    if (!unbuffered_) {
        return chunk;
    }
    const unsigned long slot = (format_.frameSize + alignment_) & ~(alignment_ - 1);
    const bool fits = slot == chunk || slot >= chunk + headBytes;
    return fits ? slot : slot + alignment_;
}

void AviWriter::fillSlot(char* buffer, unsigned long frameSize, unsigned long slot) const {
    const riff::ChunkHeader frame{frameTag, static_cast<std::uint32_t>(frameSize)};
    const auto chunk = static_cast<unsigned long>(headBytes + riff::padded(frameSize));
    std::memcpy(buffer, &frame, sizeof(frame));
    std::memset(buffer + headBytes + frameSize, 0, slot - headBytes - frameSize);
    if (slot > chunk) {
        const riff::ChunkHeader junk{riff::fourcc("JUNK"),
                                     static_cast<std::uint32_t>(slot - chunk - headBytes)};
        std::memcpy(buffer + chunk, &junk, sizeof(junk));
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

int AviWriter::writeFrame(char* buffer, unsigned long bufferSize, unsigned long frameSize) {
    if (frameSize == 0 || frameSize > format_.frameSize ||
        (format_.fixedSize && frameSize != format_.frameSize)) {
        return refused(FileIOAVI::Refused, L"the frame has not the size of the file's frames\n");
    }
    const unsigned long slot = slotFor(frameSize);
    if (bufferSize < slot) {
        return refused(FileIOAVI::Refused, L"the buffer is smaller than the frame's place in the file\n");
    }
    if (const int code = makeRoom(slot)) {
        return code;
    }
    fillSlot(buffer, frameSize, slot);
    const void* data = alignedSlot(buffer, slot);
    if (!data) {
        return refused(FileIOAVI::Refused, L"there is not enough memory\n", ERROR_NOT_ENOUGH_MEMORY);
    }
    if (const int code = output_->write(end_, data, slot)) {
        return failed(code);
    }
    countFrame(frameSize, slot);
    if (framesSinceUpdate_ >= framesPerUpdate_) {
        // The frame is written; when the headers are not, the next frame tries again.
        writeHeaders();
    }
    return FileIOAVI::Ok;
}

void AviWriter::countFrame(unsigned long frameSize, unsigned long slot) {
    indexes_.add(end_, frameSize, pieceBegin_);
    if (firstPiece()) {
        const unsigned long long listType = headers_.dataOffset() - sizeof(std::uint32_t);
        indexes_.addLegacy(static_cast<std::uint32_t>(end_ - listType), frameSize);
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

/// Sees to it that the frame may be written at the end: that the piece and the standard index have room for
/// it.
int AviWriter::makeRoom(unsigned long slot) {
    if (pieceOpen_ && pieceFrames_ != 0 && !fitsPiece(slot)) {
        if (const int code = finishPiece()) {
            return code;
        }
    }
    if (indexes_.standardFull()) {
        if (const int code = writeStandardIndex()) {
            return code;
        }
    }
    if (indexes_.standardEntries() == 0 && headers_.indexes() >= limits_.superEntries) {
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
        AviHeaderWriter::indexChunkSize * (indexes_.standardFull() ? 2ull : 1ull) +
        indexes_.tailBytes(firstPiece() ? indexes_.legacyEntries() + 1 : 0);
    return size <= limits_.pieceBytes && !(firstPiece() && indexes_.legacyFull());
}

/// The most bytes that finishing the open piece takes after `frames` more frames, and beginning the next one.
unsigned long long AviWriter::closingBytes(unsigned long frames) const {
    const unsigned long legacy = firstPiece() ? indexes_.legacyEntries() + frames : 0;
    return 2ull * AviHeaderWriter::indexChunkSize + indexes_.tailBytes(legacy) + headers_.pieceBlockSize();
}

int AviWriter::writeStandardIndex() {
    if (indexes_.standardEntries() == 0) {
        return FileIOAVI::Ok;
    }
    if (const int code = output_->write(end_, indexes_.standardChunk(), AviHeaderWriter::indexChunkSize)) {
        return failed(code);
    }
    headers_.addIndex(end_, indexes_.standardEntries());
    info_->indexPositions.push_back(end_);
    indexes_.clearStandard();
    end_ += AviHeaderWriter::indexChunkSize;
    moviEnd_ = end_;
    headersStale_ = true;
    return FileIOAVI::Ok;
}

int AviWriter::finishPiece() {
    if (const int code = writeStandardIndex()) {
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
