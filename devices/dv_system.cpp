#include "devices/dv_system.h"

namespace devices {

const dv_system& dv_system::pal_system() {
    static const dv_system system{"PAL", true, 144000, 720, 576, 12, 25, 1, 400000};
    return system;
}

const dv_system& dv_system::ntsc_system() {
    static const dv_system system{"NTSC", false, 120000, 720, 480, 10, 30000, 1001, 333667};
    return system;
}

const dv_system* dv_system::of_frame(const uint8_t* bytes, size_t count) {
    const int header_section = 0;
    if (!bytes || count < 4 || bytes[0] >> 5 != header_section || bytes[1] >> 4 != 0 || bytes[2] != 0) {
        return nullptr;
    }
    return bytes[3] & 0x80 ? &pal_system() : &ntsc_system();
}

} // namespace devices
