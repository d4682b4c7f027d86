#include "marvo/avi/avi_header.h"

#include "marvo/avi/dv_codec.h"
#include "marvo/dv/layout.h"

#include <algorithm>

using riff::fourcc;

namespace {

/// The structure at the start of a chunk; what the chunk is too short for stays 0.
template <class Structure>
Structure leading(AviSource& source, const RiffChunk& chunk) {
    Structure structure{};
    const auto bytes = std::min<unsigned long>(chunk.size, sizeof(structure));
    source.peek(chunk.data(), &structure, bytes);
    return structure;
}

} // namespace

const wchar_t* AviHeader::read(AviSource& source) {
    RiffWalker walker(source, 0);
    RiffChunk chunk;
    if (walker.next(chunk) != RiffWalker::Step::Chunk || chunk.id != fourcc("RIFF")) {
        return L"Cannot descend into avi file.";
    }
    if (chunk.type != fourcc("AVI ")) {
        return L"Not a RIFF chunk.";
    }
    walker.enter(chunk);
    while (!hasMovi && walker.next(chunk) == RiffWalker::Step::Chunk) {
        if (const wchar_t* fault = readChunk(source, walker, chunk)) {
            return fault;
        }
    }
    if (!hasMain) {
        return L"No avih chunk found.";
    }
    return hasMovi ? nullptr : L"Cannot descend into movi chunk.";
}

const wchar_t* AviHeader::readChunk(AviSource& source, RiffWalker& walker, const RiffChunk& chunk) {
    switch (chunk.id) {
    case fourcc("LIST"):
        return readList(walker, chunk);
    case fourcc("avih"):
        hasMain = true;
        main = leading<riff::MainHeader>(source, chunk);
        break;
    case fourcc("strh"):
        readStreamHeader(source, chunk);
        break;
    case fourcc("strf"):
        readFormat(source, chunk);
        break;
    case fourcc("indx"):
        if (currentIndex_) {
            *currentIndex_ = chunk;
        }
        break;
    case fourcc("dmlh"):
        hasExtended = chunk.size >= sizeof(extendedTotalFrames);
        extendedTotalFrames = leading<std::uint32_t>(source, chunk);
        break;
    case fourcc("idx1"):
        return L"idx1 must come after hdrl and movi chunks.";
    default:
        break;
    }
    return nullptr;
}

const wchar_t* AviHeader::readList(RiffWalker& walker, const RiffChunk& list) {
    switch (list.type) {
    case fourcc("hdrl"):
        inHeaderList_ = true;
        walker.enter(list);
        break;
    case fourcc("strl"):
    case fourcc("odml"):
        walker.enter(list);
        break;
    case fourcc("movi"):
        if (!inHeaderList_) {
            return L"hdrl must come before movi chunk.";
        }
        hasMovi = true;
        movi = list;
        break;
    default:
        break;
    }
    return nullptr;
}

void AviHeader::readStreamHeader(AviSource& source, const RiffChunk& chunk) {
    stream_ = leading<riff::StreamHeader>(source, chunk);
    ++streams;
    audioStreams += stream_.type == fourcc("auds") ? 1 : 0;
    interleaved |= stream_.type == fourcc("iavs");
    currentIndex_ = nullptr;
}

void AviHeader::readFormat(AviSource& source, const RiffChunk& chunk) {
    if (stream_.type == fourcc("auds") && audioStreams == 1 && soundFormat.size == 0) {
        soundStream = streams - 1;
        sound = stream_;
        soundFormat = chunk;
        currentIndex_ = &soundSuperIndex;
        return;
    }
    const auto picture = leading<riff::BitmapHeader>(source, chunk);
    const bool isDv = vdv::isCodec(stream_.handler) || vdv::isCodec(picture.compression);
    if (hasVideo || streams == 0 || stream_.type != fourcc("vids") || !isDv) {
        return;
    }
    hasVideo = true;
    currentIndex_ = &superIndex;
    videoStream = streams - 1;
    video = stream_;
    format = picture;
}

/// The two digits of a stream in the ids of its chunks.
std::uint32_t AviHeader::numberText(unsigned long stream) {
    return ('0' + stream / 10 % 10) | ('0' + stream % 10) << 8;
}

bool AviHeader::isFrame(std::uint32_t id) const {
    return hasVideo && (id & 0xFFFF) == numberText(videoStream) && isAnyFrame(id);
}

bool AviHeader::isSound(std::uint32_t id) const {
    return soundFormat.size != 0 && (id & 0xFFFF) == numberText(soundStream) &&
           id >> 16 == fourcc("00wb") >> 16;
}

bool AviHeader::isStandardIndex(std::uint32_t id) const {
    const std::uint32_t ix = fourcc("ix00") & 0xFFFF;
    const std::uint32_t number = numberText(videoStream);
    return hasVideo && (id == (ix | number << 16) || id == (number | ix << 16));
}

bool AviHeader::isAnyFrame(std::uint32_t id) {
    const auto isDigit = [](std::uint32_t character) { return character >= '0' && character <= '9'; };
    const bool isVideo = id >> 16 == fourcc("00dc") >> 16 || id >> 16 == fourcc("00db") >> 16;
    return isVideo && isDigit(id & 0xFF) && isDigit(id >> 8 & 0xFF);
}

void AviHeader::assumeVideo(unsigned long long offset, AviSource& source) {
    riff::ChunkHeader frame{};
    if (hasVideo || !source.peek(offset, &frame, sizeof(frame))) {
        return;
    }
    hasVideo = true;
    videoStream = ((frame.id & 0xFF) - '0') * 10 + ((frame.id >> 8 & 0xFF) - '0');
    format.sizeImage = frame.size;
}

unsigned long AviHeader::nominalFrameSize() const {
    if (vdv::isFrameSize(format.sizeImage)) {
        return format.sizeImage;
    }
    return format.height == static_cast<int>(vdv::system625.lines) ? vdv::palFrameBytes : vdv::ntscFrameBytes;
}
