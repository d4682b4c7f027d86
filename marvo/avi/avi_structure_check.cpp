#include "marvo/avi/avi_structure_check.h"

#include "marvo/avi/avi_search.h"
#include "marvo/dv/layout.h"

#include <cstring>

using riff::fourcc;

namespace {

/// How a four-character code is shown in a fault's text.
struct Name {
    wchar_t text[5];

    explicit Name(std::uint32_t id) {
        for (int i = 0; i < 4; ++i) {
            const std::uint32_t character = id >> 8 * i & 0xFF;
            text[i] = character >= 0x20 && character <= 0x7E ? static_cast<wchar_t>(character) : L'?';
        }
        text[4] = L'\0';
    }
};

/// Lists in lists, of which no program nests more than four; deeper ones are stepped over.
constexpr std::size_t deepestList = 16;

/// Progress is reported once in so many chunks.
constexpr unsigned long progressStep = 64;

} // namespace

bool AviStructureCheck::walk() {
    RiffWalker walker(source_, 0);
    RiffChunk chunk;
    for (unsigned long steps = 1;; ++steps) {
        const unsigned long long expected = walker.position();
        const RiffWalker::Step step = walker.next(chunk);
        if (step != RiffWalker::Step::Chunk) {
            if (!resume(walker, step)) {
                return true;
            }
            continue;
        }
        if (chunk.offset < expected) {
            findings_.fault(chunk.offset, L"the chunk before has an odd size and no padding");
        }
        leaveLists(chunk.offset);
        takeChunk(chunk);
        if (enterList(chunk)) {
            walker.enter(chunk);
        }
        if (steps % progressStep == 0 && options_.progress &&
            !options_.progress(chunk.offset, source_.size())) {
            return false;
        }
    }
}

/// After something that is no chunk, goes on with the next frame, else behind the list that it is in. False
/// when there is nothing more.
bool AviStructureCheck::resume(RiffWalker& walker, RiffWalker::Step step) {
    const unsigned long long position = walker.position();
    const unsigned long long left = source_.size() - std::min(position, source_.size());
    if (step == RiffWalker::Step::End) {
        if (left != 0) {
            findings_.fault(position, L"%llu bytes too many for nothing and too few for a chunk", left);
        }
        return false;
    }
    leaveLists(position);
    unsigned long long next = nextFrame(position + 1);
    for (auto list = lists_.rbegin(); next == source_.size() && list != lists_.rend(); ++list) {
        const unsigned long long end = riff::padded(list->end);
        next = end > position && end < source_.size() ? end : next;
    }
    if (step == RiffWalker::Step::Cut && next == source_.size()) {
        findings_.fault(position,
                        L"End of file reached. The last chunk is cut off, %llu bytes of it are there", left);
    } else {
        findings_.fault(position, L"%llu bytes are no chunks", next - position);
    }
    walker.moveTo(next);
    return next < source_.size();
}

/// The first frame from `begin` on that a search finds; the end of the file when there is none.
unsigned long long AviStructureCheck::nextFrame(unsigned long long begin) {
    if (begin < searchedFrom_ || begin > nextFrame_) {
        searchedFrom_ = begin;
        nextFrame_ = AviSearch(source_, header_, findings_.chunks).next(begin, source_.size());
    }
    return nextFrame_;
}

void AviStructureCheck::leaveLists(unsigned long long offset) {
    while (!lists_.empty() && offset >= lists_.back().end) {
        lists_.pop_back();
    }
}

void AviStructureCheck::takeChunk(const RiffChunk& chunk) {
    if (chunk.id == fourcc("RIFF")) {
        takePiece(chunk);
    } else {
        checkLevel(chunk);
    }
    if (chunk.isList() && chunk.end() > source_.size()) {
        findings_.fault(chunk.offset, L"the list '%ls' lacks its last %llu bytes", Name(chunk.type).text,
                        chunk.end() - source_.size());
    }
    if (header_.isFrame(chunk.id)) {
        takeFrame(chunk);
    } else if (header_.isStandardIndex(chunk.id)) {
        findings_.indexes.push_back(chunk);
        findings_.pieces.back().indexes += 1;
    } else if (chunk.id == fourcc("idx1")) {
        findings_.pieces.back().legacyEntries =
            static_cast<unsigned long>(chunk.size / sizeof(riff::LegacyIndexEntry));
        if (findings_.legacyIndex.id == 0) {
            findings_.legacyIndex = chunk;
        }
    }
}

void AviStructureCheck::takePiece(const RiffChunk& chunk) {
    if (!lists_.empty()) {
        findings_.fault(chunk.offset, L"a piece begins within the one before it, whose size is wrong");
        lists_.clear();
    }
    const bool first = findings_.pieces.empty();
    if (chunk.type != (first ? fourcc("AVI ") : fourcc("AVIX"))) {
        findings_.fault(chunk.offset, L"Not a RIFF chunk. Its form is '%ls'", Name(chunk.type).text);
    }
    AviInspector::Piece piece;
    piece.offset = chunk.offset;
    piece.size = std::min(chunk.paddedEnd(), source_.size()) - chunk.offset;
    findings_.pieces.push_back(piece);
    behindPiece_ = false;
}

/// Looks whether a chunk lies within the list that it is in.
void AviStructureCheck::checkLevel(const RiffChunk& chunk) {
    if (findings_.pieces.empty()) {
        findings_.fault(chunk.offset, L"Cannot descend into avi file.");
        findings_.pieces.emplace_back();
    }
    if (lists_.empty()) {
        if (!behindPiece_) {
            findings_.fault(chunk.offset, L"'%ls' and what follows lie behind the end of the piece",
                            Name(chunk.id).text);
        }
        behindPiece_ = true;
        return;
    }
    OpenList& list = lists_.back();
    if (chunk.end() > list.end && !list.overrun) {
        findings_.fault(chunk.offset, L"'%ls' of %lu bytes goes beyond the list that it is in",
                        Name(chunk.id).text, static_cast<unsigned long>(chunk.size));
        list.overrun = true;
    }
}

bool AviStructureCheck::enterList(const RiffChunk& chunk) {
    constexpr std::uint32_t known[] = {fourcc("hdrl"), fourcc("strl"), fourcc("odml"), fourcc("movi"),
                                       fourcc("rec ")};
    const bool isKnown = std::find(std::begin(known), std::end(known), chunk.type) != std::end(known);
    if (lists_.size() == deepestList || (chunk.id != fourcc("RIFF") && !(chunk.isList() && isKnown))) {
        return false;
    }
    lists_.push_back({chunk.end()});
    return true;
}

void AviStructureCheck::takeFrame(const RiffChunk& chunk) {
    findings_.chunks.add(chunk.offset, chunk.size);
    if (findings_.pieces.size() == 1) {
        ++findings_.firstPieceChunks;
    }
    if (chunk.size == 0) {
        return;
    }
    if (expectedSize_ == 0) {
        expectedSize_ = vdv::isFrameSize(chunk.size) ? chunk.size : header_.nominalFrameSize();
    }
    if (chunk.size != expectedSize_) {
        findings_.fault(chunk.offset, L"frame %lu has %lu bytes, not %lu", findings_.frames,
                        static_cast<unsigned long>(chunk.size), expectedSize_);
    }
    if (!vdv::mayBeFrameSize(chunk.size)) {
        return;
    }
    if (options_.frames) {
        checkFrameData(chunk);
    }
    ++findings_.frames;
    findings_.pieces.back().frames += 1;
}

void AviStructureCheck::checkFrameData(const RiffChunk& chunk) {
    frame_.resize(chunk.size);
    if (source_.read(chunk.data(), frame_.data(), chunk.size) != chunk.size) {
        findings_.fault(chunk.offset, L"frame %lu cannot be read", findings_.frames);
        return;
    }
    for (unsigned long sequence = 0; sequence < vdv::sequences(chunk.size); ++sequence) {
        unsigned char start[vdv::startBytes];
        std::memcpy(start, frame_.data() + sequence * vdv::sequenceBytes, sizeof(start));
        if (!vdv::isSequenceStart(start, sequence)) {
            findings_.fault(chunk.offset, L"frame %lu: DIF sequence %lu does not begin as it should",
                            findings_.frames, sequence);
            return;
        }
    }
}
