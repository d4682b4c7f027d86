#include "tools/dv_frame.h"

#include "tools/text.h"

#include <algorithm>
#include <iterator>

namespace dvrec {

namespace {

constexpr size_t blockBytes = 80;
constexpr size_t blocksPerSequence = sequenceBytes / blockBytes;
constexpr size_t packBytes = 5;

/// Blocks within a sequence, and the section type in the upper three bits of the first byte of a block's id.
constexpr size_t firstSubcodeBlock = 1;
constexpr size_t firstVauxBlock = 3;
constexpr size_t firstSoundBlock = 6;
constexpr unsigned subcodeSection = 1;
constexpr unsigned vauxSection = 2;

/// A subcode block holds six sync blocks of 8 bytes behind its id; the pack is in the last 5 of each.
constexpr size_t firstSubcodePack = 6;
constexpr size_t subcodePackStep = 8;
constexpr size_t subcodePacks = 6;
/// A VAUX block holds 15 packs behind its id.
constexpr size_t firstVauxPack = 3;
constexpr size_t vauxPacks = 15;

constexpr unsigned char timeCodePack = 0x13;
constexpr unsigned char recordingDatePack = 0x62;
constexpr unsigned char recordingTimePack = 0x63;

/// Two binary-coded digits, of which some upper bits may mean something else; nothing for other digits and
/// for numbers outside of `least` to `most`.
std::optional<unsigned> digits(unsigned char value, unsigned char mask, unsigned least, unsigned most) {
    const unsigned low = value & 0x0F;
    const unsigned number = (value & mask) / 16 * 10 + low;
    if (low > 9 || number < least || number > most) {
        return std::nullopt;
    }
    return number;
}

std::optional<TimeCode> parseTimeCode(FrameBytes pack, unsigned rate) {
    const auto frames = digits(pack[1], 0x3F, 0, rate - 1);
    const auto seconds = digits(pack[2], 0x7F, 0, 59);
    const auto minutes = digits(pack[3], 0x7F, 0, 59);
    const auto hours = digits(pack[4], 0x3F, 0, 23);
    if (!frames || !seconds || !minutes || !hours) {
        return std::nullopt;
    }
    return TimeCode{*hours, *minutes, *seconds, *frames, rate == 30 && (pack[1] & 0x40) != 0};
}

std::optional<RecordedAt::Date> parseDate(FrameBytes pack) {
    const auto day = digits(pack[2], 0x3F, 1, 31);
    const auto month = digits(pack[3], 0x1F, 1, 12);
    const auto year = digits(pack[4], 0xFF, 0, 99);
    if (!day || !month || !year) {
        return std::nullopt;
    }
    // Two digits of the year. A clock that was never set begins in 1970 with some devices.
    constexpr unsigned oldestYear = 70;
    return RecordedAt::Date{*year + (*year >= oldestYear ? 1900 : 2000), *month, *day};
}

std::optional<RecordedAt::Time> parseTime(FrameBytes pack) {
    const auto second = digits(pack[2], 0x7F, 0, 59);
    const auto minute = digits(pack[3], 0x7F, 0, 59);
    const auto hour = digits(pack[4], 0x3F, 0, 23);
    if (!second || !minute || !hour) {
        return std::nullopt;
    }
    return RecordedAt::Time{*hour, *minute, *second};
}

/// Calls `visit` with every pack of a block; false from it ends the walk.
template <class Visit>
bool visitPacks(FrameBytes block, size_t first, size_t step, size_t count, const Visit& visit) {
    for (size_t i = 0; i < count; ++i) {
        if (!visit(block.subspan(first + i * step, packBytes))) {
            return false;
        }
    }
    return true;
}

/// Calls `visit` with every pack of the frame's subcode and VAUX blocks, as far as the frame reaches.
template <class Visit>
void visitPacks(FrameBytes frame, const Visit& visit) {
    for (size_t sequence = 0; sequence < frame.size(); sequence += sequenceBytes) {
        for (size_t number = firstSubcodeBlock; number < firstSoundBlock; ++number) {
            const size_t begin = sequence + number * blockBytes;
            if (begin + blockBytes > frame.size()) {
                return;
            }
            const FrameBytes block = frame.subspan(begin, blockBytes);
            const bool subcode = number < firstVauxBlock;
            if (block[0] >> 5 != (subcode ? subcodeSection : vauxSection)) {
                continue;
            }
            const bool goOn = subcode
                                  ? visitPacks(block, firstSubcodePack, subcodePackStep, subcodePacks, visit)
                                  : visitPacks(block, firstVauxPack, packBytes, vauxPacks, visit);
            if (!goOn) {
                return;
            }
        }
    }
}

/// Number of blocks at the begin of a sequence that are what belongs there, by their ids: the section type,
/// the sequence's number, and the block's number within its section. Behind the header, subcode and VAUX
/// blocks, each sound block is followed by 15 blocks of picture.
size_t wholeBlocks(FrameBytes sequence, size_t number) {
    constexpr unsigned soundSection = 3;
    constexpr unsigned pictureSection = 4;
    constexpr size_t soundStep = 16;
    for (size_t block = 0; block < blocksPerSequence; ++block) {
        unsigned section = 0;
        size_t numberInSection = 0;
        if (block >= firstSoundBlock) {
            const size_t soundBefore = (block - firstSoundBlock) / soundStep;
            const bool sound = (block - firstSoundBlock) % soundStep == 0;
            section = sound ? soundSection : pictureSection;
            numberInSection = sound ? soundBefore : block - firstSoundBlock - soundBefore - 1;
        } else if (block >= firstSubcodeBlock) {
            section = block < firstVauxBlock ? subcodeSection : vauxSection;
            numberInSection = block - (block < firstVauxBlock ? firstSubcodeBlock : firstVauxBlock);
        }
        const FrameBytes id = sequence.subspan(block * blockBytes, 3);
        if (id[0] >> 5 != section || static_cast<size_t>(id[1] >> 4) != number || id[2] != numberInSection) {
            return block;
        }
    }
    return blocksPerSequence;
}

constexpr unsigned long sizes525[] = {120000, 240000, 480000};
constexpr unsigned long sizes625[] = {144000, 288000, 576000};

} // namespace

unsigned long TimeCode::count(unsigned rate) const {
    const unsigned long allMinutes = hours * 60ul + minutes;
    const unsigned long dropped = dropFrame ? 2 * (allMinutes - allMinutes / 10) : 0;
    return (allMinutes * 60 + seconds) * rate + frames - dropped;
}

std::string TimeCode::text() const {
    return format("%02u:%02u:%02u%c%02u", hours, minutes, seconds, dropFrame ? ';' : ':', frames);
}

std::string RecordedAt::text() const {
    std::string text = date ? format("%04u-%02u-%02u", date->year, date->month, date->day) : "";
    if (time) {
        text += format("%s%02u:%02u:%02u", date ? " " : "", time->hour, time->minute, time->second);
    }
    return text;
}

std::optional<TimeCode> readTimeCode(FrameBytes frame) {
    std::optional<TimeCode> found;
    const unsigned rate = is625(frame) ? 25 : 30;
    visitPacks(frame, [&](FrameBytes pack) {
        if (pack[0] == timeCodePack) {
            found = parseTimeCode(pack, rate);
        }
        return !found;
    });
    return found;
}

RecordedAt readRecordedAt(FrameBytes frame) {
    RecordedAt found;
    visitPacks(frame, [&](FrameBytes pack) {
        if (pack[0] == recordingDatePack && !found.date) {
            found.date = parseDate(pack);
        } else if (pack[0] == recordingTimePack && !found.time) {
            found.time = parseTime(pack);
        }
        return !found.date || !found.time;
    });
    return found;
}

bool is625(FrameBytes frame) {
    return frame.size() > 3 && (frame[3] & 0x80) != 0;
}

bool is625Size(unsigned long size) {
    return std::find(std::begin(sizes625), std::end(sizes625), size) != std::end(sizes625);
}

bool isFrameSize(unsigned long size) {
    return is625Size(size) || std::find(std::begin(sizes525), std::end(sizes525), size) != std::end(sizes525);
}

double frameRate(unsigned long size) {
    return is625Size(size) ? 25.0 : 30000.0 / 1001;
}

bool isFrameStart(FrameBytes bytes) {
    return bytes.size() > 3 && bytes[0] == 0x1F && bytes[1] == 0x07 && bytes[2] == 0;
}

std::string faultOf(FrameBytes frame) {
    const auto size = static_cast<unsigned long>(frame.size());
    if (!isFrameSize(size)) {
        return format("has %lu bytes, which is no size of a DV frame", size);
    }
    if (!isFrameStart(frame)) {
        return "does not begin as a DV frame does";
    }
    if (is625(frame) != is625Size(size)) {
        return format("has %lu bytes, but its header block says %s", size,
                      is625(frame) ? "625/50" : "525/60");
    }
    // In frames of 50 and 100 Mbit/s the sequences' numbers begin again with each channel.
    const size_t sequences = is625Size(size) ? 12 : 10;
    for (size_t begin = 0; begin < size; begin += sequenceBytes) {
        const size_t found =
            wholeBlocks(frame.subspan(begin, sequenceBytes), begin / sequenceBytes % sequences);
        if (found < blocksPerSequence) {
            return format("is damaged inside: block %u of its sequence %u is not there",
                          static_cast<unsigned>(found), static_cast<unsigned>(begin / sequenceBytes));
        }
    }
    return {};
}

} // namespace dvrec
