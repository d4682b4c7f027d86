#include "devices/dv_picture.h"

namespace devices {

namespace {

const uint8_t grey = 128;

dv_plane plane(int width, int height) {
    return {width, height, std::vector<uint8_t>(static_cast<size_t>(width) * height, grey)};
}

} // namespace

dv_picture::dv_picture(const dv_system& system)
    : luma(plane(system.width, system.height)),
      blue(system.pal ? plane(system.width / 2, system.height / 2) : plane(system.width / 4, system.height)),
      red(blue), system_(&system) {}

} // namespace devices
