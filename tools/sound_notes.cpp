#include "tools/sound_notes.h"

#include "tools/text.h"

#include <iterator>

namespace dvrec {

namespace {

constexpr unsigned char sourcePack = 0x50;
constexpr size_t soundBlockStep = 16;
constexpr size_t soundBlocks = 9;

/// The source pack of a sequence, which is in the start of one of its sound blocks; nothing without one.
vdv::FrameBytes sourceIn(vdv::FrameBytes sequence) {
    for (size_t i = 0; i < soundBlocks; ++i) {
        const vdv::FrameBytes block =
            sequence.subspan((vdv::firstSoundBlock + i * soundBlockStep) * vdv::blockBytes, vdv::blockBytes);
        const bool sound = static_cast<vdv::Section>(block[0] >> 5) == vdv::Section::sound;
        if (sound && block[vdv::startBytes] == sourcePack) {
            return block.subspan(vdv::startBytes, 5);
        }
    }
    return {};
}

} // namespace

SoundNotes SoundNotes::read(vdv::FrameBytes frame) {
    constexpr unsigned rates[] = {48000, 44100, 32000};
    constexpr unsigned noChannel = 0xF;
    SoundNotes notes;
    unsigned usedHalves = 0;
    const size_t sequences = frame.size() / vdv::sequenceBytes;
    for (size_t i = 0; i < sequences; ++i) {
        const vdv::FrameBytes pack = sourceIn(frame.subspan(i * vdv::sequenceBytes, vdv::sequenceBytes));
        const unsigned rate = pack.empty() ? std::size(rates) : pack[4] >> 3 & 7;
        if (rate >= std::size(rates) || (pack[2] & noChannel) == noChannel) {
            continue;
        }
        notes.rate = rates[rate];
        notes.bits = (pack[4] & 7) == 1 ? 12 : 16;
        notes.locked = (pack[1] & 0x80) == 0;
        usedHalves |= i < sequences / 2 ? 1u : 2u;
    }
    // Each half of the frame carries one channel, or two of 12 bits.
    const unsigned halves = (usedHalves & 1) + (usedHalves >> 1);
    notes.channels = halves * (notes.bits == 12 ? 2 : 1);
    return notes;
}

std::string SoundNotes::text() const {
    return rate == 0 ? "none"
                     : format("%u Hz, %s of %u bits%s", rate, counted(channels, "channel").c_str(), bits,
                              locked ? "" : ", not locked to the picture");
}

} // namespace dvrec
