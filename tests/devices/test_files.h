/// @file
/// Files for one test, and frames to put in them.
#pragma once

#include "devices/dv_system.h"

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace device_tests {

using bytes = std::vector<uint8_t>;

/// The folder of the test that runs, in the temporary folder; removed with its files at the end.
class test_folder {
public:
    test_folder() { std::filesystem::create_directory(path_); }
    ~test_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    test_folder(const test_folder&) = delete;
    test_folder& operator=(const test_folder&) = delete;

    /// The full path of a file in the folder.
    std::wstring path(const std::string& name) const { return (path_ / name).wstring(); }

    std::wstring write(const std::string& name, const bytes& content) const {
        std::ofstream(path_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(content.data()), content.size());
        return path(name);
    }

private:
    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() / ("devices-" + std::to_string(GetCurrentProcessId()));
};

/// A frame of valid DIF blocks: the sections' identifications stand, the picture is grey, and all else is
/// zero. `mark` is put where no picture is, to tell frames apart.
inline bytes grey_frame(const devices::dv_system& system, uint8_t mark = 0) {
    bytes frame(system.frame_bytes);
    const int first_six[] = {0, 1, 1, 2, 2, 2};
    for (size_t block = 0; block < frame.size() / 80; ++block) {
        const size_t in_sequence = block % 150;
        const int section = in_sequence < 6 ? first_six[in_sequence] : in_sequence % 16 == 6 ? 3 : 4;
        uint8_t* id = &frame[block * 80];
        id[0] = static_cast<uint8_t>(section << 5 | 0x1F);
        id[1] = static_cast<uint8_t>(block / 150 << 4 | 0x07);
        // Four blocks of brightness, two of colour: nothing but the codes for their ends.
        for (const int begin : {4, 18, 32, 46, 60, 70}) {
            id[begin + 1] = section == 4 ? 0x06 : 0;
        }
    }
    frame[3] = system.pal ? 0xBF : 0x3F;
    frame[79] = mark;
    return frame;
}

/// Frames marked 0, 1, 2 and so on.
inline bytes marked_frames(const devices::dv_system& system, int count) {
    bytes all;
    for (int mark = 0; mark < count; ++mark) {
        const bytes frame = grey_frame(system, static_cast<uint8_t>(mark));
        all.insert(all.end(), frame.begin(), frame.end());
    }
    return all;
}

} // namespace device_tests
