#include "devices/dv_segment.h"

#include "devices/dv_transform.h"

#include <algorithm>
#include <cstring>

namespace devices {

namespace {

const int video_section = 4;
const uint32_t first_block = 32; // bits: behind identification and status
const uint32_t luma_bits = 112;
const uint32_t chroma_bits = 80;
const uint32_t head_bits = 12; // mean, transform, class
const uint32_t peek_bits = 25; // what one look at any place surely sees
/// A pool of bits is never longer than what it is made of. In front of it there is room for the beginning of
/// a code, behind it for a look beyond the end.
const uint32_t before_pool = 32;
const int bytes_around = before_pool / 8 + 4;

/// What a macroblock's status says of it.
struct status {
    bool bad;   ///< its bits are wrong somewhere
    bool alone; ///< it does not go with the others of its segment
};

/// Status 0 is for what came from the tape without errors; 2, 4 and 6 say that the player has put another
/// macroblock here that goes with the others, 10, 12 and 14 one that does not. 7 and 15 are errors, and the
/// rest means nothing.
status status_of(int sta) {
    return {sta % 2 != 0 || sta == 8, sta >= 8};
}

} // namespace

void dv_segment::read(const uint8_t* const (&dif_blocks)[parts]) {
    uint8_t pool[parts * dif_block_bytes + bytes_around];
    bits spare{pool, before_pool, before_pool};
    bool shared = true;
    std::memset(pool, 0, sizeof pool);
    for (int part = 0; part < parts; ++part) {
        const uint8_t* const bytes = dif_blocks[part];
        const bool there = bytes && bytes[0] >> 5 == video_section;
        const status said = there ? status_of(bytes[3] >> 4) : status{true, true};
        usable_[part] = !said.bad && read_macroblock(bytes, blocks_[part], spare);
        shared = shared && usable_[part] && !said.alone;
    }
    // With one gone, what is left in the others does not line up: their finest details stay out.
    for (int part = 0; shared && part < parts; ++part) {
        shared = usable_[part] = go_on(blocks_[part], spare);
    }
}

void dv_segment::draw(int part, int block, uint8_t* out, ptrdiff_t line_bytes) const {
    const struct block& drawn = blocks_[part][block];
    if (drawn.next <= 1) {
        dv_transform::flat_block(drawn.coefficient[0], out, line_bytes);
    } else if (drawn.two_fields) {
        dv_transform::field_block(drawn.coefficient, out, line_bytes);
    } else {
        dv_transform::frame_block(drawn.coefficient, out, line_bytes);
    }
}

/// Reads the blocks' own places, then lets the unfinished ones go on in the macroblock; what is left then is
/// added to `segment_spare`. False when the codes make no sense.
bool dv_segment::read_macroblock(const uint8_t* dif_block, block* into, bits& segment_spare) {
    uint8_t own[dif_block_bytes + 4];
    uint8_t pool[dif_block_bytes + bytes_around];
    bits spare{pool, before_pool, before_pool};
    std::memcpy(own, dif_block, dif_block_bytes);
    std::memset(own + dif_block_bytes, 0, 4);
    std::memset(pool, 0, sizeof pool);
    const int number = own[3] & 0x0F;
    uint32_t begin = first_block;
    for (int index = 0; index < blocks; ++index) {
        const uint32_t end = begin + (index < 4 ? luma_bits : chroma_bits);
        const uint8_t* const head = own + begin / 8;
        const int nine_bits = head[0] << 1 | head[1] >> 7;
        const int mean = nine_bits < 256 ? nine_bits : nine_bits - 512; // in halves of a step from mid grey
        block& one = into[index];
        one.two_fields = head[1] & 0x40;
        one.scale = &quantiser_.of(one.two_fields, head[1] >> 4 & 3, number);
        std::memset(one.coefficient, 0, sizeof one.coefficient);
        one.coefficient[0] = mean * (1 << (dv_transform::fraction_bits - 1)) + dv_transform::grey;
        one.next = 1;
        one.finished = false;
        bits place{own, begin + head_bits, end};
        if (!read_codes(one, place)) {
            return false;
        }
        append(spare, place);
        begin = end;
    }
    if (!go_on(into, spare)) {
        return false;
    }
    append(segment_spare, spare);
    return true;
}

/// Lets a macroblock's unfinished blocks read on, one after the other. False when the codes make no sense.
bool dv_segment::go_on(block* with, bits& spare) const {
    for (int index = 0; index < blocks; ++index) {
        block& one = with[index];
        if (one.finished) {
            continue;
        }
        if (spare.next == spare.end) {
            break;
        }
        put_before(spare, one.rest, one.rest_bits);
        if (!read_codes(one, spare)) {
            return false;
        }
    }
    return true;
}

/// Reads until the block is finished or the bits are used up, of which the beginning of a code is kept. False
/// when there are more coefficients than a block has.
bool dv_segment::read_codes(block& into, bits& from) const {
    const dv_scale& scale = *into.scale;
    int next = into.next;
    bits at = from;
    for (;;) {
        const uint32_t word = peek(at);
        const dv_code code = codes_.at(word);
        if (at.next + code.length > at.end) {
            into.next = next;
            into.rest = word;
            into.rest_bits = at.end - at.next;
            from.next = at.end;
            return true;
        }
        at.next += code.length;
        next += code.run;
        if (next >= 64) {
            into.next = code.run == dv_code::end_of_block ? next - code.run : next;
            into.finished = true;
            from.next = at.next;
            return code.run == dv_code::end_of_block;
        }
        const int32_t worth = code.level * scale.factor[next];
        const int to_input = dv_scale::fraction_bits - dv_transform::fraction_bits;
        into.coefficient[scale.position[next]] = (worth + (1 << (to_input - 1))) >> to_input;
        ++next;
    }
}

/// The next bits, at least `peek_bits` of them, in the highest ones.
uint32_t dv_segment::peek(const bits& from) {
    const uint8_t* const bytes = from.bytes + from.next / 8;
    const uint32_t word = static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
                          static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
    return word << from.next % 8;
}

/// Adds the bits that have not been read.
void dv_segment::append(bits& to, bits from) {
    while (from.next < from.end) {
        // So many that they fit into four bytes wherever they begin.
        const uint32_t count = std::min(from.end - from.next, peek_bits);
        const uint32_t value = peek(from) >> (32 - count) << (32 - count) >> to.end % 8;
        uint8_t* const bytes = to.bytes + to.end / 8;
        bytes[0] = static_cast<uint8_t>((bytes[0] & ~(0xFFu >> to.end % 8)) | value >> 24);
        bytes[1] = static_cast<uint8_t>(value >> 16);
        bytes[2] = static_cast<uint8_t>(value >> 8);
        bytes[3] = static_cast<uint8_t>(value);
        to.end += count;
        from.next += count;
    }
}

/// Puts the highest `count` bits of a value in front of those not yet read, over bits that have been.
void dv_segment::put_before(bits& to, uint32_t value, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        --to.next;
        uint8_t& byte = to.bytes[to.next / 8];
        const uint32_t mask = 0x80u >> to.next % 8;
        byte = static_cast<uint8_t>(value >> (32 - count + i) & 1 ? byte | mask : byte & ~mask);
    }
}

} // namespace devices
