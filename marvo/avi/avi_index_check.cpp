#include "marvo/avi/avi_index_check.h"

#include <algorithm>
#include <optional>

namespace {

/// "avih": the file has an "idx1".
constexpr std::uint32_t hasIndexFlag = 0x10;

} // namespace

void AviIndexCheck::check() {
    checkPresence();
    checkCounts();
    checkSuperIndex();
    checkLegacyIndex();
}

void AviIndexCheck::checkPresence() {
    const bool hasLegacy = findings_.legacyIndex.id != 0;
    const bool hasSuper = header_.superIndex.size != 0;
    if ((header_.main.flags & hasIndexFlag) != 0 && !hasLegacy) {
        findings_.fault(0, L"'idx1' is missing, although the header announces it");
    } else if (!hasLegacy && !hasSuper && findings_.frames != 0) {
        findings_.fault(0, L"the file has no index");
    }
    if (findings_.pieces.size() > 1 && !hasSuper) {
        findings_.fault(0, L"the file has %lu pieces, but no super index",
                        static_cast<unsigned long>(findings_.pieces.size()));
    }
}

/// Programs count chunks or frames. In "avih" stand the frames of the first piece, those of the file, or, as
/// ffmpeg does it, one more than in the first piece.
void AviIndexCheck::checkCounts() {
    const unsigned long first = findings_.pieces.empty() ? 0 : findings_.pieces.front().frames;
    const std::uint32_t said = header_.main.totalFrames;
    if (said < first || said > findings_.frames) {
        checkCount(0, L"avih", said, findings_.frames);
    }
    checkCount(0, L"strh", header_.video.length, findings_.frames);
    if (header_.hasExtended) {
        checkCount(0, L"dmlh", header_.extendedTotalFrames, findings_.frames);
    }
}

void AviIndexCheck::checkCount(unsigned long long offset, const wchar_t* what, std::uint32_t said,
                               unsigned long found) const {
    if (said != found && said != findings_.chunks.count()) {
        findings_.fault(offset, L"'%ls' says %lu frames, %lu are there", what,
                        static_cast<unsigned long>(said), found);
    }
}

bool AviIndexCheck::isChunk(unsigned long long offset, std::uint32_t size) const {
    const unsigned long found = findings_.chunks.find(offset);
    return found < findings_.chunks.count() && findings_.chunks.size(found) == size;
}

void AviIndexCheck::checkSuperIndex() {
    const RiffChunk& chunk = header_.superIndex;
    if (chunk.size == 0) {
        return;
    }
    riff::IndexHeader head{};
    if (chunk.size < sizeof(head) || !source_.peek(chunk.data(), &head, sizeof(head)) || head.type != 0 ||
        head.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::SuperIndexEntry) ||
        head.entriesInUse > (chunk.size - sizeof(head)) / sizeof(riff::SuperIndexEntry)) {
        findings_.fault(chunk.offset, L"cannot read the super index entry.");
        return;
    }
    unsigned long number = 0;
    const auto check = [&](const riff::SuperIndexEntry& entry) {
        checkSuperEntry(number++, entry);
        return true;
    };
    source_.forEachRecord<riff::SuperIndexEntry>(chunk.data() + sizeof(head), head.entriesInUse, check);
    if (named_ < findings_.indexes.size()) {
        findings_.fault(chunk.offset, L"the super index names %lu of %lu standard indexes", named_,
                        static_cast<unsigned long>(findings_.indexes.size()));
    }
    if (covered_ != findings_.frames && covered_ != findings_.chunks.count()) {
        findings_.fault(chunk.offset, L"the standard indexes cover %lu of %lu frames", covered_,
                        findings_.frames);
    }
}

void AviIndexCheck::checkSuperEntry(unsigned long number, const riff::SuperIndexEntry& entry) {
    const unsigned long long offset = riff::join(entry.offsetLow, entry.offsetHigh);
    if (offset < behindLast_) {
        findings_.fault(header_.superIndex.offset, L"entry %lu of the super index leads back", number);
        return;
    }
    behindLast_ = offset + sizeof(riff::ChunkHeader);
    const auto before = [](const RiffChunk& index, unsigned long long place) { return index.offset < place; };
    const auto found = std::lower_bound(findings_.indexes.begin(), findings_.indexes.end(), offset, before);
    if (found == findings_.indexes.end() || found->offset != offset) {
        findings_.fault(header_.superIndex.offset,
                        L"no ix chunk found in movi LIST: entry %lu of the super index leads to %llu", number,
                        offset);
        return;
    }
    ++named_;
    // Some programs give the size with the chunk header, some without.
    if (entry.size != found->size && entry.size != found->size + sizeof(riff::ChunkHeader)) {
        findings_.fault(header_.superIndex.offset, L"entry %lu of the super index has the wrong size",
                        number);
    }
    checkStandardIndex(*found, entry.duration);
}

void AviIndexCheck::checkStandardIndex(const RiffChunk& chunk, std::uint32_t duration) {
    riff::IndexHeader head{};
    if (chunk.size < sizeof(head) || !source_.peek(chunk.data(), &head, sizeof(head)) || head.type != 1 ||
        head.subType != 0 || head.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::StandardIndexEntry) ||
        head.entriesInUse > (chunk.size - sizeof(head)) / sizeof(riff::StandardIndexEntry)) {
        findings_.fault(chunk.offset,
                        head.type == 0 ? L"Tried to get the info for a standard index, but the data is for a "
                                         L"super index"
                                       : L"cannot read the standard index entry.");
        return;
    }
    if (duration != head.entriesInUse) {
        findings_.fault(chunk.offset, L"the standard index has %lu entries, the super index says %lu",
                        static_cast<unsigned long>(head.entriesInUse), static_cast<unsigned long>(duration));
    }
    const unsigned long long base = riff::join(head.baseOffsetLow, head.baseOffsetHigh);
    unsigned long number = 0;
    const auto check = [&](const riff::StandardIndexEntry& entry) {
        const bool fits =
            isChunk(base + entry.offset - sizeof(riff::ChunkHeader), entry.size & riff::standardSizeMask);
        covered_ += fits ? 1 : 0;
        if (!fits) {
            findings_.fault(chunk.offset, L"entry %lu of the standard index fits no frame", number);
        }
        ++number;
        return true;
    };
    source_.forEachRecord<riff::StandardIndexEntry>(chunk.data() + sizeof(head), head.entriesInUse, check);
}

void AviIndexCheck::checkLegacyIndex() {
    const RiffChunk& chunk = findings_.legacyIndex;
    if (chunk.id == 0) {
        return;
    }
    if (chunk.size % sizeof(riff::LegacyIndexEntry) != 0) {
        findings_.fault(chunk.offset, L"cannot read the last index entry.");
    }
    std::optional<unsigned long long> base;
    unsigned long fitting = 0;
    unsigned long number = 0;
    const auto check = [&](const riff::LegacyIndexEntry& entry) {
        if (header_.isFrame(entry.chunkId)) {
            if (!base) {
                const bool absolute = isChunk(entry.offset, entry.size);
                base = absolute ? 0 : header_.movi.data();
            }
            const bool fits = isChunk(*base + entry.offset, entry.size);
            fitting += fits ? 1 : 0;
            if (!fits) {
                findings_.fault(chunk.offset, L"entry %lu of the index fits no frame", number);
            }
        }
        ++number;
        return true;
    };
    source_.forEachRecord<riff::LegacyIndexEntry>(chunk.data(), chunk.size / sizeof(riff::LegacyIndexEntry),
                                                  check);
    const unsigned long first = findings_.pieces.empty() ? 0 : findings_.pieces.front().frames;
    if (fitting != findings_.firstPieceChunks && fitting != first) {
        findings_.fault(chunk.offset, L"the index has %lu frames, %lu are in the first piece", fitting,
                        first);
    }
}
