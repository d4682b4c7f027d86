#include "marvo/dv/inspection.h"

#include "marvo/core/text.h"

namespace vdv {

namespace {

/// Number of blocks at the start of a sequence that are what belongs there, by their ids: the section type,
/// the sequence's number, and the block's number within its section. Behind the header, subcode and VAUX
/// blocks, each sound block is followed by 15 blocks of picture.
std::size_t wholeBlocks(FrameBytes sequence, std::size_t number) {
    constexpr std::size_t soundStep = 16;
    for (std::size_t block = 0; block < blocksPerSequence; ++block) {
        Section section = Section::header;
        std::size_t numberInSection = 0;
        if (block >= firstSoundBlock) {
            const std::size_t soundBefore = (block - firstSoundBlock) / soundStep;
            const bool sound = (block - firstSoundBlock) % soundStep == 0;
            section = sound ? Section::sound : Section::picture;
            numberInSection = sound ? soundBefore : block - firstSoundBlock - soundBefore - 1;
        } else if (block >= firstSubcodeBlock) {
            const bool subcode = block < firstVauxBlock;
            section = subcode ? Section::subcode : Section::vaux;
            numberInSection = block - (subcode ? firstSubcodeBlock : firstVauxBlock);
        }
        const FrameBytes id = sequence.subspan(block * blockBytes, startBytes);
        if (static_cast<Section>(id[0] >> 5) != section || static_cast<std::size_t>(id[1] >> 4) != number ||
            id[2] != numberInSection) {
            return block;
        }
    }
    return blocksPerSequence;
}

} // namespace

std::string faultOf(FrameBytes frame) {
    const auto size = static_cast<unsigned long>(frame.size());
    const System* const system = systemOf(size);
    if (!system) {
        return vcore::format("has %lu bytes, which is no size of a DV frame", size);
    }
    if (!isFrameStart(frame)) {
        return "does not begin as a DV frame does";
    }
    if (&systemSaid(frame) != system) {
        return vcore::format("has %lu bytes, but its header block says %s", size, systemSaid(frame).name);
    }
    for (std::size_t start = 0; start < size; start += sequenceBytes) {
        const std::size_t number = start / sequenceBytes;
        // In frames of 50 and 100 Mbit/s the sequences' numbers start again with each channel.
        const std::size_t found =
            wholeBlocks(frame.subspan(start, sequenceBytes), number % system->sequences);
        if (found < blocksPerSequence) {
            return vcore::format("is damaged inside: block %u of its sequence %u is not there",
                                 static_cast<unsigned>(found), static_cast<unsigned>(number));
        }
    }
    return {};
}

} // namespace vdv
