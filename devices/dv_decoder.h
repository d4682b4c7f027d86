/// @file
/// From DV frames to pictures.
#pragma once

#include "devices/dv_layout.h"
#include "devices/dv_picture.h"
#include "devices/dv_segment.h"

namespace devices {

/// Decodes the pictures of DV frames of 25 Mbit/s. No COM, one thread at a time.
class dv_decoder {
public:
    /// Reads a frame. The system is what the frame's header says, else `expected`. Macroblocks that are
    /// missing, marked as bad or without sense keep the former frame's picture, or are grey when there was
    /// none of this system. Whatever the bytes, nothing beyond `count` of them is read.
    void decode(const uint8_t* bytes, size_t count, const dv_system& expected);
    /// Forgets the former frame.
    void reset() { picture_ = dv_picture(picture_.system()); }

    /// The last decoded frame's; grey before the first.
    const dv_picture& picture() const { return picture_; }

private:
    void draw(int part, const dv_macroblock& place);

    dv_picture picture_{dv_system::pal_system()};
    dv_segment segment_;
};

} // namespace devices
