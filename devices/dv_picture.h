/// @file
/// The picture of a DV frame.
#pragma once

#include "devices/dv_system.h"

#include <cstdint>
#include <vector>

namespace devices {

/// Turns DV frames into RGB pictures. Of every 8x8 block only its mean (the DC coefficient) is used, and the
/// picture is drawn smoothly between the blocks' centres: large things can be read, fine ones not. No COM,
/// one thread at a time.
class dv_picture {
public:
    dv_picture();

    /// Reads a frame. The system is what the frame's header says, else `expected`. Damaged, foreign and
    /// missing parts come out grey; whatever the bytes, nothing beyond `count` of them is read.
    void decode(const uint8_t* bytes, size_t count, const dv_system& expected);

    /// Draws the last decoded frame (grey before the first) at the size of `target`, bottom line first,
    /// `pixel_bytes` 4 (blue, green, red, 0) or 3 a pixel without gaps. A frame of the other system is cut,
    /// or ends in black lines.
    void paint(const dv_system& target, int pixel_bytes, uint8_t* out) const;

private:
    /// Red and blue side by side in one number and green in another, 16 bits a channel: sums of two weighted
    /// colours are then two sums instead of three.
    struct colour {
        uint32_t red_blue;
        uint32_t green;
    };

    static colour from_dc(int luma, int red_difference, int blue_difference);
    static int dc_of(const uint8_t* block);
    void blend_rows(int line, colour* out) const;
    template <class Pixel>
    static void paint_line(const colour* cells, int columns, uint8_t* out);

    const dv_system* system_;
    std::vector<colour> cells_;
};

} // namespace devices
