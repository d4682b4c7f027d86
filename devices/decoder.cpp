#include "devices/decoder.h"

#include "devices/dv_painter.h"

namespace devices {

const CLSID decoder::clsid = {0xB1B77C00, 0xC3E4, 0x11CF, {0xAF, 0x79, 0x00, 0xAA, 0x00, 0xB6, 0x7A, 0x42}};

const dv_system* decoder::input_system(const AM_MEDIA_TYPE& type) const {
    return media_type::dv_video_system(type);
}

std::vector<media_type> decoder::output_types(const dv_system& system) const {
    return {media_type::picture(system, dv_pixels::rgb32), media_type::picture(system, dv_pixels::rgb24),
            media_type::picture(system, dv_pixels::yuy2), media_type::picture(system, dv_pixels::uyvy)};
}

HRESULT decoder::on_start() {
    // What was lost at the start of a stream must not come from the end of another.
    pictures_.reset();
    return transform_filter::on_start();
}

size_t decoder::transform(const dv_system& system, const AM_MEDIA_TYPE& out_type, const BYTE* in,
                          size_t in_bytes, BYTE* out, size_t out_bytes) {
    pictures_.decode(in, in_bytes, system);
    dv_painter(pictures_.picture()).paint(system, media_type::pixels(out_type), out);
    return out_bytes;
}

} // namespace devices
