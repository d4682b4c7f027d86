#include "marvo/avi/avi_sound_reader.h"

#include "marvo/dv/layout.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

using riff::fourcc;

namespace {

/// What is read around the headers of chunks.
constexpr unsigned long walkBytes = 0x200;

/// Sound outside of these makes no sense.
constexpr unsigned long lowestRate = 1000;
constexpr unsigned long highestRate = 400000;
constexpr unsigned mostChannels = 8;

/// Frame rates outside of these are taken for damage.
constexpr double lowestFrameRate = 10;
constexpr double highestFrameRate = 120;

/// Chunks behind the first "movi" list among which the legacy index is looked for.
constexpr int legacyTries = 4;

} // namespace

AviSoundReader::Stream AviSoundReader::open(const wchar_t* name, unsigned long frames) {
    try {
        if (!name || !source_.open(name)) {
            return Stream::none;
        }
        header_.read(source_);
        source_.readAhead(walkBytes);
        if (header_.soundFormat.size == 0 || !header_.hasMovi) {
            return Stream::none;
        }
        if (!readFormat()) {
            return Stream::unreadable;
        }
        if (!findChunks(frames)) {
            walk();
        }
        return Stream::readable;
    } catch (const std::bad_alloc&) {
        fault_ = L"has an index for which there is not enough memory";
        return Stream::unreadable;
    }
}

bool AviSoundReader::readFormat() {
    struct {
        riff::WaveFormat wave;
        riff::WaveExtension more;
    } format{};
    static_assert(sizeof(format) == 40);
    source_.peek(header_.soundFormat.data(), &format,
                 std::min<unsigned long>(header_.soundFormat.size, sizeof(format)));
    const riff::WaveFormat& wave = format.wave;
    if ((wave.tag == riff::extensible ? format.more.tag : wave.tag) != riff::pcm) {
        fault_ = L"is compressed";
        return false;
    }
    blockBytes_ = wave.channels * (wave.bitsPerSample / 8u);
    if (wave.samplesPerSec < lowestRate || wave.samplesPerSec > highestRate || wave.channels == 0 ||
        wave.channels > mostChannels || wave.bitsPerSample % 8 != 0 || wave.bitsPerSample < 8 ||
        wave.bitsPerSample > 32 || wave.blockAlign != blockBytes_) {
        fault_ = L"has a description that makes no sense";
        return false;
    }
    format_.rate = wave.samplesPerSec;
    format_.channels = wave.channels;
    format_.bits = wave.bitsPerSample;
    format_.channelMask = wave.tag == riff::extensible ? format.more.channelMask : 0;
    // A program that has measured its sound card says here what came of it.
    double rate = wave.samplesPerSec;
    const riff::StreamHeader& stream = header_.sound;
    const double said = stream.scale != 0 ? static_cast<double>(stream.rate) / stream.scale : 0;
    if (std::abs(said - rate) < rate / 10) {
        rate = said;
        format_.clockRate = stream.rate;
        format_.clockScale = stream.scale;
    }
    const bool is625 = header_.nominalFrameSize() == vdv::palFrameBytes;
    const double frameRate = header_.rate() >= lowestFrameRate && header_.rate() <= highestFrameRate
                                 ? header_.rate()
                                 : (is625 ? vdv::system625 : vdv::system525).rate;
    samplesPerFrame_ = rate / frameRate;
    format_.mostSamples = static_cast<unsigned long>(samplesPerFrame_) + 2;
    firstSample_ = static_cast<std::int32_t>(stream.start);
    return true;
}

/// Finds the chunks by their indexes. False when these are not enough.
bool AviSoundReader::findChunks(unsigned long frames) {
    const bool dropsNothing = header_.video.length == frames;
    const bool loaded = header_.soundSuperIndex.size != 0 ? loadSuperIndex() : loadLegacyIndex();
    return dropsNothing && loaded && isWhole();
}

bool AviSoundReader::loadSuperIndex() {
    const RiffChunk& chunk = header_.soundSuperIndex;
    riff::IndexHeader head{};
    if (chunk.size < sizeof(head) || !source_.peek(chunk.data(), &head, sizeof(head)) || head.type != 0 ||
        head.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::SuperIndexEntry) ||
        head.entriesInUse > (chunk.size - sizeof(head)) / sizeof(riff::SuperIndexEntry)) {
        return false;
    }
    return source_.forEachRecord<riff::SuperIndexEntry>(
        chunk.data() + sizeof(head), head.entriesInUse, [this](const riff::SuperIndexEntry& entry) {
            return loadStandardIndex(riff::join(entry.offsetLow, entry.offsetHigh));
        });
}

bool AviSoundReader::loadStandardIndex(std::uint64_t offset) {
    riff::ChunkHeader chunk{};
    riff::IndexHeader head{};
    if (offset > source_.size() || !source_.peek(offset, &chunk, sizeof(chunk)) ||
        !source_.peek(offset + sizeof(chunk), &head, sizeof(head)) || chunk.size < sizeof(head) ||
        head.type != 1 || head.subType != 0 || !header_.isSound(head.chunkId) ||
        head.longsPerEntry * sizeof(std::uint32_t) != sizeof(riff::StandardIndexEntry) ||
        head.entriesInUse > (chunk.size - sizeof(head)) / sizeof(riff::StandardIndexEntry)) {
        return false;
    }
    const std::uint64_t base = riff::join(head.baseOffsetLow, head.baseOffsetHigh);
    return source_.forEachRecord<riff::StandardIndexEntry>(
        offset + sizeof(chunk) + sizeof(head), head.entriesInUse, [&](const riff::StandardIndexEntry& entry) {
            return add(base + entry.offset, entry.size & riff::standardSizeMask);
        });
}

/// The index of a file of one piece.
bool AviSoundReader::loadLegacyIndex() {
    RiffWalker walker(source_, header_.movi.paddedEnd());
    RiffChunk index;
    for (int i = 0; i < legacyTries && index.id != fourcc("idx1"); ++i) {
        if (walker.next(index) != RiffWalker::Step::Chunk || index.id == fourcc("RIFF")) {
            return false;
        }
    }
    if (index.id != fourcc("idx1") || header_.superIndex.size != 0) {
        return false;
    }
    // Offsets are counted from the type of the list of frames, or from the start of the file.
    std::uint64_t base = 0;
    return source_.forEachRecord<riff::LegacyIndexEntry>(
        index.data(), index.size / sizeof(riff::LegacyIndexEntry), [&](const riff::LegacyIndexEntry& entry) {
            if (!header_.isSound(entry.chunkId)) {
                return true;
            }
            if (chunks_.empty()) {
                const Chunk absolute{entry.offset + sizeof(riff::ChunkHeader), 0, entry.size};
                base = isChunkAt(absolute) ? 0 : header_.movi.data();
            }
            return add(base + entry.offset + sizeof(riff::ChunkHeader), entry.size);
        });
}

/// Notes a chunk by where its data stands. False when it cannot be there.
bool AviSoundReader::add(std::uint64_t offset, std::uint32_t bytes) {
    const std::uint64_t all = source_.size();
    const std::uint64_t behindLast = chunks_.empty() ? 0 : chunks_.back().offset + chunks_.back().bytes;
    if (offset < behindLast + sizeof(riff::ChunkHeader) || offset > all || all - offset < bytes) {
        return false;
    }
    chunks_.push_back({offset, bytes_, bytes});
    bytes_ += bytes;
    return true;
}

/// Whether the indexes name everything that the header promises, and that is there where it is looked for.
bool AviSoundReader::isWhole() {
    if (chunks_.empty() || bytes_ / blockBytes_ < header_.sound.length) {
        return false;
    }
    return isChunkAt(chunks_.front()) && isChunkAt(chunks_[chunks_.size() / 2]) && isChunkAt(chunks_.back());
}

bool AviSoundReader::isChunkAt(const Chunk& chunk) {
    riff::ChunkHeader header{};
    return source_.peek(chunk.offset - sizeof(header), &header, sizeof(header)) &&
           header_.isSound(header.id) && header.size == chunk.bytes;
}

void AviSoundReader::walk() {
    chunks_.clear();
    drops_.clear();
    bytes_ = 0;
    unsigned long frames = 0;
    RiffWalker walker(source_, header_.movi.offset);
    RiffChunk chunk;
    while (walker.next(chunk) == RiffWalker::Step::Chunk) {
        const bool holdsChunks = chunk.id == fourcc("RIFF") || chunk.type == fourcc("movi") ||
                                 (chunk.isList() && chunk.type == fourcc("rec "));
        if (holdsChunks) {
            walker.enter(chunk);
        } else if (header_.isSound(chunk.id)) {
            add(chunk.data(), chunk.size);
        } else if (header_.isFrame(chunk.id)) {
            if (vdv::mayBeFrameSize(chunk.size)) {
                ++frames;
            } else {
                drops_.push_back(frames);
            }
        }
    }
}

/// The sample, counted in the stream, with which a frame begins.
long long AviSoundReader::placeOf(unsigned long frame) const {
    const auto dropped = std::upper_bound(drops_.begin(), drops_.end(), frame) - drops_.begin();
    const double time = static_cast<double>(frame) + static_cast<double>(dropped);
    return static_cast<long long>(std::floor(time * samplesPerFrame_ + 0.5)) - firstSample_;
}

const std::vector<unsigned char>& AviSoundReader::read(unsigned long frame) {
    const long long first = placeOf(frame);
    // The sound behind a dropped frame belongs to no frame.
    const auto samples = static_cast<unsigned long>(std::floor((frame + 1.0) * samplesPerFrame_ + 0.5) -
                                                    std::floor(frame * samplesPerFrame_ + 0.5));
    constexpr unsigned char silentByte = 0x80;
    sound_.assign(std::size_t{samples} * blockBytes_, format_.bits == 8 ? silentByte : 0);
    const auto early = static_cast<std::uint64_t>(std::max(-first, 0ll)) * blockBytes_;
    const auto skipped = static_cast<std::size_t>(std::min<std::uint64_t>(early, sound_.size()));
    std::uint64_t place = static_cast<std::uint64_t>(std::max(first, 0ll)) * blockBytes_;
    const auto behind = [](std::uint64_t wanted, const Chunk& chunk) { return wanted < chunk.place; };
    auto chunk = std::upper_bound(chunks_.begin(), chunks_.end(), place, behind);
    chunk -= chunk != chunks_.begin() ? 1 : 0;
    for (std::size_t done = skipped; done < sound_.size() && chunk != chunks_.end(); ++chunk) {
        const std::uint64_t from = place - chunk->place;
        if (from >= chunk->bytes) {
            continue;
        }
        const auto bytes =
            static_cast<unsigned long>(std::min<std::uint64_t>(chunk->bytes - from, sound_.size() - done));
        source_.read(chunk->offset + from, sound_.data() + done, bytes);
        done += bytes;
        place += bytes;
    }
    return sound_;
}
