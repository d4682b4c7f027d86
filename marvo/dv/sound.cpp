#include "marvo/dv/sound.h"

#include "marvo/dv/packs.h"

#include <array>
#include <new>

// From IEC 61834-2 and SMPTE 314M. Each DIF sequence has nine sound blocks: the block's id, a pack, and
// samples. The first half of the sequences holds one channel of 16 bits or a pair of 12 bits, the second half
// another, and neighbouring samples are spread over the sequences and blocks so that a lost block costs no
// two in a row.

namespace {

using vdv::FrameBytes;

constexpr unsigned soundBlocks = 9;
constexpr unsigned blockStep = 16;
constexpr std::size_t packPlace = 3;
constexpr std::size_t firstSample = 8;

/// The pack "AAUX source".
constexpr unsigned char sourcePack = 0x50;
/// The audio mode of a half in which there is nothing.
constexpr unsigned noSound = 0x0F;

/// What no sample is: 16-bit ones have it for a lost sample, and no 12-bit sample grows so large.
constexpr short lost = -32768;
constexpr unsigned lost12 = 0x800;

struct Rate {
    unsigned long rate;
    unsigned least625; ///< the fewest samples in a frame; the pack counts from there
    unsigned least525;
};
constexpr Rate rates[] = {{48000, 1896, 1580}, {44100, 1742, 1452}, {32000, 1264, 1053}};

/// How samples of so many bits lie in a block: one of 16 bits in two bytes, a pair of 12 bits in three.
struct Quantization {
    unsigned bits;
    unsigned bytes;
    unsigned channels; ///< in each half of the sequences
};
constexpr Quantization quantizations[] = {{16, 2, 1}, {12, 3, 2}};

/// What a source pack says.
struct Source {
    const Rate* rate = nullptr;
    const Quantization* quantization = nullptr;
    unsigned long samples = 0;
    bool locked = false;
    bool sounds = false; ///< whether there is anything in this half
};

/// A 12-bit sample in 16 bits: steps of 1 up to 512, then twice as coarse with each 256 steps; negative ones
/// are the mirror of the others.
constexpr short expanded(unsigned value) {
    const bool negative = (value & 0x800) != 0;
    const unsigned size = (negative ? ~value : value) & 0x7FF;
    const unsigned shift = size < 0x200 ? 0 : (size >> 8) - 1;
    const auto wide = static_cast<int>((size - 256 * shift) << shift);
    return static_cast<short>(negative ? ~wide : wide);
}
static_assert(expanded(0x1FF) == 511 && expanded(0x7FF) == 32704 && expanded(0xDFF) == -513);

short sample16(const unsigned char* at) {
    return static_cast<short>(at[0] << 8 | at[1]);
}

/// The first or the second sample of a pair.
short sample12(const unsigned char* at, bool second) {
    const unsigned low = second ? at[2] & 0x0Fu : at[2] >> 4;
    const unsigned value = static_cast<unsigned>(at[second ? 1 : 0]) << 4 | low;
    return value == lost12 ? lost : expanded(value);
}

/// A half of the sequences of a 25 Mbit/s channel.
class Half {
public:
    Half(FrameBytes frame, unsigned sequences) : frame_(frame), sequences_(sequences) {}

    /// The first source pack that makes sense, into `source`, and whether another pack of that kind was
    /// there.
    bool findSource(Source& source, bool& senseless) const {
        for (unsigned sequence = 0; sequence < sequences_; ++sequence) {
            for (unsigned block = 0; block < soundBlocks; ++block) {
                const FrameBytes bytes = blockAt(sequence, block);
                if (isSound(bytes) && bytes[packPlace] == sourcePack) {
                    if (parse(bytes.subspan(packPlace, vdv::packBytes), source)) {
                        return true;
                    }
                    senseless = true;
                }
            }
        }
        return false;
    }

    /// Reads the samples of a channel, the second one of a pair with `second`, each `step` behind the one
    /// before.
    void read(const Source& source, bool second, short* to, unsigned step) const;

private:
    FrameBytes blockAt(unsigned sequence, unsigned block) const {
        const std::size_t number =
            sequence * vdv::blocksPerSequence + vdv::firstSoundBlock + block * blockStep;
        return frame_.subspan(number * vdv::blockBytes, vdv::blockBytes);
    }

    static bool isSound(FrameBytes block) {
        return static_cast<vdv::Section>(block[0] >> 5) == vdv::Section::sound;
    }

    bool parse(FrameBytes pack, Source& source) const {
        const unsigned rate = pack[4] >> 3 & 0x07;
        const unsigned quantization = pack[4] & 0x07;
        if (rate >= std::size(rates) || quantization >= std::size(quantizations)) {
            return false;
        }
        source.rate = &rates[rate];
        source.quantization = &quantizations[quantization];
        const bool is625 = 2 * sequences_ == vdv::system625.sequences;
        source.samples = (is625 ? source.rate->least625 : source.rate->least525) + (pack[1] & 0x3Fu);
        source.locked = (pack[1] & 0x80) == 0;
        source.sounds = (pack[2] & 0x0F) != noSound;
        const unsigned long inBlock = (vdv::blockBytes - firstSample) / source.quantization->bytes;
        return source.samples <= inBlock * soundBlocks * sequences_;
    }

    FrameBytes frame_;
    unsigned sequences_;
};

void Half::read(const Source& source, bool second, short* to, unsigned step) const {
    const Quantization& form = *source.quantization;
    const unsigned spread = soundBlocks * sequences_;
    for (unsigned first = 0; first < spread; ++first) {
        const FrameBytes block =
            blockAt((first / 3 + 2 * (first % 3)) % sequences_, 3 * (first % 3) + first / (3 * sequences_));
        const bool whole = isSound(block);
        const unsigned char* at = &block[firstSample];
        for (unsigned long n = first; n < source.samples; n += spread, at += form.bytes) {
            to[n * step] = !whole ? lost : form.bits == 16 ? sample16(at) : sample12(at, second);
        }
    }
}

/// Replaces the lost ones of `count` samples, each `step` behind the one before; how many there were.
unsigned long conceal(short* samples, unsigned long count, unsigned step) {
    unsigned long replaced = 0;
    unsigned long known = 0; ///< the number behind that of the last sample that is there
    for (unsigned long n = 0; n <= count; ++n) {
        if (n < count && samples[n * step] == lost) {
            continue;
        }
        const int from = known > 0 ? samples[(known - 1) * step] : n < count ? samples[n * step] : 0;
        const int to = n < count ? samples[n * step] : from;
        const auto gap = static_cast<int>(n - known);
        for (int i = 0; i < gap; ++i) {
            samples[(known + static_cast<unsigned long>(i)) * step] =
                static_cast<short>(from + (to - from) * (i + 1) / (gap + 1));
        }
        replaced += static_cast<unsigned long>(gap);
        known = n + 1;
    }
    return replaced;
}

} // namespace

dvSound::dvSound() = default;

dvSound::~dvSound() = default;

bool dvSound::refuse(const wchar_t* why) {
    explanation_ = why;
    return false;
}

bool dvSound::decode(const void* frame, unsigned long size) {
    rate_ = samples_ = concealed_ = 0;
    channels_ = bits_ = 0;
    locked_ = false;
    explanation_ = L"";
    const vdv::System* const system = vdv::systemOf(size);
    if (!frame || !system) {
        return refuse(L"has no size of a DV frame");
    }
    const FrameBytes bytes(static_cast<const unsigned char*>(frame), size);
    const unsigned sequences = system->sequences / 2;
    const std::size_t halfBytes = sequences * vdv::sequenceBytes;
    const std::size_t halves = size / halfBytes;
    Source source;
    bool senseless = false;
    for (std::size_t i = 0; i < halves && !source.rate; ++i) {
        Source found;
        if (Half(bytes.subspan(i * halfBytes, halfBytes), sequences).findSource(found, senseless)) {
            source = found;
        }
    }
    if (!source.rate) {
        return refuse(senseless ? L"holds sound of a kind that is not read" : L"holds no sound");
    }
    if (!data_) {
        data_.reset(new (std::nothrow) short[std::size_t{mostSamples} * mostChannels]);
        if (!data_) {
            return refuse(L"cannot be read: there is not enough memory");
        }
    }
    const Quantization& form = *source.quantization;
    // A second half of 12 bits is the exception, one of 16 bits the second channel of a pair.
    std::array<std::size_t, mostChannels> sounding{};
    std::size_t halvesWithSound = 0;
    for (std::size_t i = 0; i < halves && (halvesWithSound + 1) * form.channels <= mostChannels; ++i) {
        Source own;
        bool ignored = false;
        const bool told = Half(bytes.subspan(i * halfBytes, halfBytes), sequences).findSource(own, ignored);
        if (told ? own.sounds : i % 2 == 0 || form.channels == 1) {
            sounding[halvesWithSound++] = i;
        }
    }
    if (halvesWithSound == 0) {
        return refuse(L"holds no sound");
    }
    rate_ = source.rate->rate;
    bits_ = form.bits;
    locked_ = source.locked;
    samples_ = source.samples;
    channels_ = static_cast<unsigned>(halvesWithSound) * form.channels;
    for (unsigned channel = 0; channel < channels_; ++channel) {
        const Half half(bytes.subspan(sounding[channel / form.channels] * halfBytes, halfBytes), sequences);
        const bool second = channel % form.channels != 0;
        short* const to = data_.get() + channel;
        half.read(source, second, to, channels_);
        concealed_ += conceal(to, samples_, channels_);
    }
    return true;
}
