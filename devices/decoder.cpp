#include "devices/decoder.h"

namespace devices {

const CLSID decoder::clsid = {0xB1B77C00, 0xC3E4, 0x11CF, {0xAF, 0x79, 0x00, 0xAA, 0x00, 0xB6, 0x7A, 0x42}};

const dv_system* decoder::input_system(const AM_MEDIA_TYPE& type) const {
    return media_type::dv_video_system(type);
}

std::vector<media_type> decoder::output_types(const dv_system& system) const {
    return {media_type::rgb(system, 32), media_type::rgb(system, 24)};
}

size_t decoder::transform(const dv_system& system, const AM_MEDIA_TYPE& out_type, const BYTE* in,
                          size_t in_bytes, BYTE* out, size_t out_bytes) {
    picture_.decode(in, in_bytes, system);
    picture_.paint(system, out_type.subtype == MEDIASUBTYPE_RGB32 ? 4 : 3, out);
    return out_bytes;
}

} // namespace devices
