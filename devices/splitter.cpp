#include "devices/splitter.h"

#include <algorithm>
#include <cstring>

namespace devices {

const CLSID splitter::clsid = {0x4EB31670, 0x9FC6, 0x11CF, {0xAF, 0x6E, 0x00, 0xAA, 0x00, 0xB6, 0x7A, 0x42}};

const dv_system* splitter::input_system(const AM_MEDIA_TYPE& type) const {
    return media_type::interleaved_system(type);
}

std::vector<media_type> splitter::output_types(const dv_system& system) const {
    return {media_type::dv_video(system)};
}

size_t splitter::transform(const dv_system&, const AM_MEDIA_TYPE&, const BYTE* in, size_t in_bytes, BYTE* out,
                           size_t out_bytes) {
    const size_t count = std::min(in_bytes, out_bytes);
    std::memcpy(out, in, count);
    return count;
}

} // namespace devices
