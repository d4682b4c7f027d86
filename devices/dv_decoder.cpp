#include "devices/dv_decoder.h"

#include <cstring>

namespace devices {

namespace {

const int block_size = 8;

} // namespace

void dv_decoder::decode(const uint8_t* bytes, size_t count, const dv_system& expected) {
    const dv_system* const said = dv_system::of_frame(bytes, count);
    const dv_system& system = said ? *said : expected;
    if (&system != &picture_.system()) {
        picture_ = dv_picture(system);
    }
    const std::vector<dv_macroblock>& places = dv_layout::of(system).macroblocks();
    for (size_t first = 0; first < places.size(); first += dv_segment::parts) {
        const dv_macroblock* const place = &places[first];
        const uint8_t* dif_blocks[dv_segment::parts];
        for (int part = 0; part < dv_segment::parts; ++part) {
            const size_t offset = place[part].offset;
            dif_blocks[part] = offset + dv_segment::dif_block_bytes <= count ? bytes + offset : nullptr;
        }
        segment_.read(dif_blocks);
        for (int part = 0; part < dv_segment::parts; ++part) {
            if (segment_.usable(part)) {
                draw(part, place[part]);
            }
        }
    }
}

/// Draws one macroblock of the segment.
void dv_decoder::draw(int part, const dv_macroblock& place) {
    dv_plane& luma = picture_.luma;
    for (int block = 0; block < 4; ++block) {
        const int right = place.square ? block % 2 : block;
        const int down = place.square ? block / 2 : 0;
        segment_.draw(part, block, luma.line(place.y + down * block_size) + place.x + right * block_size,
                      luma.width);
    }
    int block = 4;
    for (dv_plane* plane : {&picture_.red, &picture_.blue}) {
        const int x = place.x * plane->width / luma.width;
        const int y = place.y * plane->height / luma.height;
        if (x + block_size <= plane->width) {
            segment_.draw(part, block, plane->line(y) + x, plane->width);
        } else {
            // The right edge of 4:1:1: the half block for the lower lines lies beside that for the upper
            // ones.
            const int half = block_size / 2;
            uint8_t both[block_size * block_size];
            segment_.draw(part, block, both, block_size);
            for (int line = 0; line < 2 * block_size; ++line) {
                const int from = line % block_size * block_size + line / block_size * half;
                std::memcpy(plane->line(y + line) + x, both + from, half);
            }
        }
        ++block;
    }
}

} // namespace devices
