#include "marvo/dv/packs.h"

namespace vdv {

namespace {

/// A subcode block holds six sync blocks of 8 bytes behind its id; the pack is in the last 5 of each.
constexpr std::size_t firstSubcodePack = 6;
constexpr std::size_t subcodePackStep = 8;
constexpr std::size_t subcodePacks = 6;
/// A VAUX block holds 15 packs behind its id.
constexpr std::size_t firstVauxPack = 3;
constexpr std::size_t vauxPacks = 15;

bool visitBlock(FrameBytes block, std::size_t first, std::size_t step, std::size_t count,
                const std::function<bool(FrameBytes)>& visit) {
    for (std::size_t i = 0; i < count; ++i) {
        if (!visit(block.subspan(first + i * step, packBytes))) {
            return false;
        }
    }
    return true;
}

} // namespace

void visitPacks(FrameBytes frame, const std::function<bool(FrameBytes)>& visit) {
    for (std::size_t sequence = 0; sequence < frame.size(); sequence += sequenceBytes) {
        for (std::size_t number = firstSubcodeBlock; number < firstSoundBlock; ++number) {
            const std::size_t start = sequence + number * blockBytes;
            if (start + blockBytes > frame.size()) {
                return;
            }
            const FrameBytes block = frame.subspan(start, blockBytes);
            const bool subcode = number < firstVauxBlock;
            if (static_cast<Section>(block[0] >> 5) != (subcode ? Section::subcode : Section::vaux)) {
                continue;
            }
            const bool goOn = subcode
                                  ? visitBlock(block, firstSubcodePack, subcodePackStep, subcodePacks, visit)
                                  : visitBlock(block, firstVauxPack, packBytes, vauxPacks, visit);
            if (!goOn) {
                return;
            }
        }
    }
}

std::optional<unsigned> packDigits(unsigned char value, unsigned char mask, unsigned least, unsigned most) {
    const unsigned low = value & 0x0F;
    const unsigned number = (value & mask) / 16 * 10 + low;
    if (low > 9 || number < least || number > most) {
        return std::nullopt;
    }
    return number;
}

} // namespace vdv
