#include "marvo/avi/avi_frame_finder.h"

#include "marvo/dv/layout.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

using riff::fourcc;

namespace {

/// Most that is read of a standard index at once; it is one of 2044 frames many times over.
constexpr unsigned long blockBytes = 0x40000;

/// What is read behind each standard index: there is the next chunk, with its header, and often, behind
/// padding up to the next sector, the start of the next piece. Each would take a read of its own later.
constexpr unsigned long behindIndexBytes = 0x1000 + sizeof(riff::ListHeader);

/// Chunks of an index that are compared with the file.
constexpr unsigned long samples = 4;

/// Entries at the start of a legacy index that are tried to find out what their offsets are counted from.
constexpr int baseTries = 64;

/// Chunks looked at behind the first "movi" list to find the legacy index.
constexpr int legacyTries = 4;

/// What is not larger is read by way of the source's windows.
constexpr unsigned long smallBytes = 0x200;

unsigned long long positionOf(const riff::SuperIndexEntry& entry) {
    return riff::join(entry.offsetLow, entry.offsetHigh);
}

struct StandardIndexHead {
    riff::ChunkHeader chunk;
    riff::IndexHeader index;
};
static_assert(sizeof(StandardIndexHead) % sizeof(riff::StandardIndexEntry) == 0);

#if defined(__i386__)
/// Every processor that the supported systems run on has it, and the compiler does not count on it.
#define MARVO_SSE2 __attribute__((target("sse2")))
#else
#define MARVO_SSE2
#endif

/// Entries that are compared without a decision for each.
constexpr std::size_t blockEntries = 64;

/// Whether each of the `blockEntries` entries from `entries` on has the distance `stride` from the one before
/// it, and its size.
MARVO_SSE2 bool goesOn(const riff::StandardIndexEntry* entries, std::uint32_t stride) {
    const auto distance = static_cast<int>(stride);
    const __m128i expected = _mm_set_epi32(0, distance, 0, distance);
    const __m128i counted = _mm_set_epi32(riff::standardSizeMask, -1, riff::standardSizeMask, -1);
    __m128i differs = _mm_setzero_si128();
    for (std::size_t i = 0; i < blockEntries; i += 2) {
        const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + i));
        const __m128i before = _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + i - 1));
        const __m128i difference = _mm_xor_si128(_mm_sub_epi32(here, before), expected);
        differs = _mm_or_si128(differs, _mm_and_si128(difference, counted));
    }
    return _mm_movemask_epi8(_mm_cmpeq_epi32(differs, _mm_setzero_si128())) == 0xFFFF;
}

/// The first entry behind `first` that does not go on with the distance and the size of those before it. Most
/// of them do, so blocks of them are compared without a decision for each.
std::size_t endOfRun(const riff::StandardIndexEntry* entries, std::size_t first, std::size_t count,
                     std::uint32_t stride, std::uint32_t size) {
    constexpr std::size_t promising = 8;
    const auto fits = [&](std::size_t i) {
        return entries[i].offset - entries[i - 1].offset == stride &&
               (entries[i].size & riff::standardSizeMask) == size;
    };
    std::size_t end = first + 1;
    while (end < count && end - first < promising && fits(end)) {
        ++end;
    }
    while (end - first >= promising && end + blockEntries <= count && goesOn(entries + end, stride)) {
        end += blockEntries;
    }
    while (end < count && fits(end)) {
        ++end;
    }
    return end;
}

} // namespace

void AviFrameFinder::find() {
    addPiece(0);
    restart();
    loadSuperIndex();
    findPieces();
    loadLegacyIndex();
    if (!samplesFit()) {
        doubtIndexes(L"an index contradicts the chunks");
        restart();
    }
    walkTo(~0ull);
    source_.forget();
    info_.totalFrames = index_.count();
}

void AviFrameFinder::findNew() {
    source_.updateSize();
    walkTo(~0ull);
    info_.totalFrames = index_.count();
}

/// Begins anew without any frame.
void AviFrameFinder::restart() {
    index_.clear();
    info_.walkedFrames = 0;
    cursor_ = header_.movi.offset + sizeof(riff::ListHeader);
}

bool AviFrameFinder::doubtIndexes(const wchar_t* reason) {
    doubt_ = reason;
    return false;
}

/// Goes from piece to piece by the sizes they give themselves, as far as these are true.
void AviFrameFinder::findPieces() {
    RiffWalker walker(source_, 0);
    RiffChunk piece;
    while (walker.next(piece) == RiffWalker::Step::Chunk && piece.id == fourcc("RIFF")) {
        addPiece(piece.offset);
    }
}

void AviFrameFinder::addPiece(unsigned long long offset) {
    std::vector<unsigned long long>& known = info_.piecePositions;
    const auto place = std::lower_bound(known.begin(), known.end(), offset);
    if (place == known.end() || *place != offset) {
        known.insert(place, offset);
    }
    info_.pieces = static_cast<unsigned long>(info_.piecePositions.size());
}

void AviFrameFinder::loadSuperIndex() {
    const RiffChunk& chunk = header_.superIndex;
    riff::IndexHeader head{};
    if (chunk.size < sizeof(head) || !source_.peek(chunk.data(), &head, sizeof(head))) {
        return;
    }
    const std::uint32_t room = (chunk.size - sizeof(head)) / sizeof(riff::SuperIndexEntry);
    if (head.type != 0 || head.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::SuperIndexEntry) ||
        head.entriesInUse > room) {
        doubtIndexes(L"cannot read the super index entry.");
        return;
    }
    std::vector<riff::SuperIndexEntry> entries;
    const auto keep = [&entries](const riff::SuperIndexEntry& entry) {
        entries.push_back(entry);
        return true;
    };
    source_.forEachRecord<riff::SuperIndexEntry>(chunk.data() + sizeof(head), head.entriesInUse, keep);
    behindIndexes_ = sizeof(riff::ListHeader);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const unsigned long long offset = positionOf(entries[i]);
        // Standard indexes follow each other in the file; so nothing is read twice, and no cycle is followed.
        if (offset < behindIndexes_) {
            doubtIndexes(L"the super index leads back");
            return;
        }
        const unsigned long long next = i + 1 < entries.size() ? positionOf(entries[i + 1]) : ~0ull;
        behindIndexes_ = offset + sizeof(StandardIndexHead);
        indexStarts_.push_back(index_.count());
        if (loadStandardIndex(entries[i], std::max(next, behindIndexes_) - offset)) {
            info_.indexPositions.push_back(offset);
        }
    }
}

/// Reads the standard index of an entry, up to which the next one follows `room` bytes behind it.
bool AviFrameFinder::loadStandardIndex(const riff::SuperIndexEntry& entry, unsigned long long room) {
    const unsigned long long offset = positionOf(entry);
    StandardIndexHead head{};
    const auto limited = [room](unsigned long bytes) {
        return static_cast<unsigned long>(std::min<unsigned long long>(bytes, room));
    };
    const auto wanted = std::clamp<unsigned long>(limited(entry.size), sizeof(head), blockBytes);
    const unsigned long whole = limited(wanted + behindIndexBytes);
    block_.resize(std::max<size_t>(block_.size(), whole / sizeof(block_[0]) + 1));
    const auto* const bytes = reinterpret_cast<const unsigned char*>(block_.data());
    // Small ones that lie side by side share a read.
    const bool peeked = whole <= smallBytes && source_.peek(offset, block_.data(), whole);
    const unsigned long all = peeked ? whole : source_.read(offset, block_.data(), whole);
    const unsigned long got = std::min(all, wanted);
    if (got < sizeof(head)) {
        return doubtIndexes(L"no ix chunk found in movi LIST");
    }
    // The chunk header of the index itself is passed by the last walk.
    source_.keep(offset, bytes, sizeof(head));
    keepHeaders(offset, got, all);
    std::memcpy(&head, bytes, sizeof(head));
    if (head.index.type == 0) {
        return doubtIndexes(L"Tried to get the info for a standard index, but the data is for a super index");
    }
    if (head.chunk.size < sizeof(head.index) || head.index.type != 1 || head.index.subType != 0 ||
        head.index.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::StandardIndexEntry) ||
        !header_.isFrame(head.index.chunkId) ||
        head.index.entriesInUse > (head.chunk.size - sizeof(head.index)) / sizeof(riff::StandardIndexEntry)) {
        return doubtIndexes(L"cannot read the standard index entry.");
    }
    // The entries, not the chunk, whose size may be damage.
    behindIndexes_ =
        offset + sizeof(head) + head.index.entriesInUse * 1ull * sizeof(riff::StandardIndexEntry);
    if (behindIndexes_ > source_.size()) {
        return doubtIndexes(L"a standard index is cut off");
    }
    const unsigned long long base = riff::join(head.index.baseOffsetLow, head.index.baseOffsetHigh);
    const std::uint32_t entries = head.index.entriesInUse;
    const auto here =
        std::min<std::uint32_t>(entries, (got - sizeof(head)) / sizeof(riff::StandardIndexEntry));
    if (!addEntries(base, block_.data() + sizeof(head) / sizeof(block_[0]), here)) {
        return false;
    }
    const auto add = [this, base](const riff::StandardIndexEntry& frame) {
        return addIndexed(base + frame.offset - sizeof(riff::ChunkHeader),
                          frame.size & riff::standardSizeMask);
    };
    const unsigned long long rest = offset + sizeof(head) + here * sizeof(riff::StandardIndexEntry);
    return source_.forEachRecord<riff::StandardIndexEntry>(rest, entries - here, add) ||
           doubtIndexes(doubt_ ? doubt_ : L"cannot read the standard index entry.");
}

/// Keeps the headers of the chunks from byte `begin` of the block on, which was read at `offset` and has
/// `end` bytes.
void AviFrameFinder::keepHeaders(unsigned long long offset, unsigned long begin, unsigned long end) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(block_.data());
    riff::ChunkHeader header{};
    unsigned long long position = begin;
    while (position + sizeof(header) <= end) {
        const auto at = static_cast<unsigned long>(position);
        source_.keep(offset + at, bytes + at, end - at);
        std::memcpy(&header, bytes + at, sizeof(header));
        position += sizeof(header) + riff::padded(header.size);
    }
}

/// Appends the frames of entries. Those at equal distances are compared and checked together, since the time
/// that opening a long recording takes is spent here.
bool AviFrameFinder::addEntries(unsigned long long base, const riff::StandardIndexEntry* entries,
                                std::size_t count) {
    for (std::size_t begin = 0, end = 0; begin < count; begin = end) {
        const std::uint32_t first = entries[begin].offset;
        const std::uint32_t size = entries[begin].size & riff::standardSizeMask;
        const std::uint32_t stride = begin + 1 < count ? entries[begin + 1].offset - first : 0;
        end = endOfRun(entries, begin, count, stride, size);
        const unsigned long long offset = base + first - sizeof(riff::ChunkHeader);
        if (addRun(offset, size, stride, static_cast<std::uint32_t>(end - begin))) {
            continue;
        }
        for (std::size_t i = begin; i < end; ++i) {
            if (!addIndexed(base + entries[i].offset - sizeof(riff::ChunkHeader), size)) {
                return false;
            }
        }
    }
    return true;
}

/// Appends frames at equal distances. False, and nothing is done, when they do not simply follow what is
/// known or a frame may stand between them.
bool AviFrameFinder::addRun(unsigned long long offset, std::uint32_t size, std::uint32_t stride,
                            std::uint32_t count) {
    const unsigned long long room = sizeof(riff::ChunkHeader) + header_.nominalFrameSize();
    const unsigned long long whole = sizeof(riff::ChunkHeader) + riff::padded(size);
    const unsigned long long last = offset + static_cast<unsigned long long>(stride) * (count - 1);
    if (count < 3 || !vdv::mayBeFrameSize(size) || stride < whole || stride - whole >= room ||
        offset < cursor_ || offset - cursor_ >= room || last < offset || last > source_.size() ||
        source_.size() - last < sizeof(riff::ChunkHeader) + size) {
        return false;
    }
    index_.addRun(offset, size, stride, count);
    cursor_ = last + whole;
    return true;
}

void AviFrameFinder::loadLegacyIndex() {
    RiffChunk chunk;
    if (!findLegacyIndex(chunk)) {
        return;
    }
    info_.legacyEntries = chunk.size / sizeof(riff::LegacyIndexEntry);
    if (index_.count() != 0) {
        return;
    }
    bool hasBase = false;
    unsigned long long base = 0;
    int tries = baseTries;
    const auto add = [&](const riff::LegacyIndexEntry& entry) {
        if (!header_.isFrame(entry.chunkId) || !vdv::mayBeFrameSize(entry.size)) {
            return true;
        }
        if (!hasBase) {
            hasBase = legacyBase(entry, base);
            if (!hasBase) {
                return --tries > 0;
            }
        }
        return addIndexed(base + entry.offset, entry.size);
    };
    if (!source_.forEachRecord<riff::LegacyIndexEntry>(chunk.data(), info_.legacyEntries, add) && !doubt_) {
        doubtIndexes(L"cannot read the legacy index entry.");
    }
}

/// Looks for "idx1" behind the first list of frames.
bool AviFrameFinder::findLegacyIndex(RiffChunk& found) {
    RiffWalker walker(source_, header_.movi.paddedEnd());
    for (int i = 0; i < legacyTries && walker.next(found) == RiffWalker::Step::Chunk; ++i) {
        if (found.id == fourcc("idx1")) {
            return true;
        }
        if (found.id == fourcc("RIFF")) {
            return false;
        }
    }
    return false;
}

/// What the offsets of a legacy index are counted from: the type of the list of frames, or the start of the
/// file. False when `entry` fits neither.
bool AviFrameFinder::legacyBase(const riff::LegacyIndexEntry& entry, unsigned long long& base) {
    for (const unsigned long long candidate : {header_.movi.data(), 0ull}) {
        if (isFrameAt(candidate + entry.offset, entry.size)) {
            base = candidate;
            return true;
        }
    }
    return false;
}

/// Appends the frame of an index entry, and before it what stands between it and the frame known last when
/// there is room for a frame. False when the entry contradicts what is known.
bool AviFrameFinder::addIndexed(unsigned long long offset, std::uint32_t size) {
    if (!vdv::mayBeFrameSize(size)) {
        return true;
    }
    const unsigned long long all = source_.size();
    if (offset < cursor_ || offset > all || all - offset < sizeof(riff::ChunkHeader) + size) {
        return doubtIndexes(L"an index entry is impossible");
    }
    const unsigned long long room = sizeof(riff::ChunkHeader) + header_.nominalFrameSize();
    if (offset - cursor_ >= room && !(walkTo(offset) && isFrameAt(offset, size))) {
        return doubtIndexes(L"an index entry points into a chunk");
    }
    index_.add(offset, size);
    cursor_ = offset + sizeof(riff::ChunkHeader) + riff::padded(size);
    return true;
}

bool AviFrameFinder::isFrameAt(unsigned long long offset, std::uint32_t size) {
    riff::ChunkHeader header{};
    return source_.peek(offset, &header, sizeof(header)) && header_.isFrame(header.id) && header.size == size;
}

/// A frame from `frame` on, less than `step` behind it: one whose chunk header need not be read any more, if
/// there is one among those with which the indexes start.
unsigned long AviFrameFinder::sampleNear(unsigned long frame, unsigned long step) const {
    auto start = std::lower_bound(indexStarts_.begin(), indexStarts_.end(), frame);
    for (; start != indexStarts_.end() && *start < index_.count() && *start - frame < step; ++start) {
        if (source_.has(index_.offset(*start), sizeof(riff::ChunkHeader))) {
            return *start;
        }
    }
    return frame;
}

/// Whether the file holds what the indexes say: at some frames, and at the last, where a walk is to go on.
bool AviFrameFinder::samplesFit() {
    const unsigned long count = index_.count();
    const unsigned long step = std::max(count / samples, 1ul);
    for (unsigned long frame = 0; frame < count; frame += step) {
        const unsigned long sample = sampleNear(frame, step);
        if (!isFrameAt(index_.offset(sample), index_.size(sample))) {
            return false;
        }
    }
    return count == 0 || isFrameAt(index_.offset(count - 1), index_.size(count - 1));
}

/// Takes the frames from the cursor up to `end` as the chunks have them. False when `end` lies within a
/// chunk.
bool AviFrameFinder::walkTo(unsigned long long end) {
    RiffWalker walker(source_, cursor_);
    RiffChunk chunk;
    while (walker.position() < end && walker.next(chunk) == RiffWalker::Step::Chunk) {
        const bool holdsFrames = chunk.type == fourcc("movi") || chunk.type == fourcc("rec ");
        if (chunk.id == fourcc("RIFF")) {
            addPiece(chunk.offset);
            walker.enter(chunk);
        } else if (holdsFrames) {
            walker.enter(chunk);
        } else if (header_.isFrame(chunk.id)) {
            addWalked(chunk);
        }
        cursor_ = walker.position();
    }
    return walker.position() <= end;
}

void AviFrameFinder::addWalked(const RiffChunk& chunk) {
    if (vdv::mayBeFrameSize(chunk.size)) {
        index_.add(chunk.offset, chunk.size);
        ++info_.walkedFrames;
    }
}
