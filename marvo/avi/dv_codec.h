/// @file
/// The codes by which AVI files name DV video.
#pragma once

#include "marvo/avi/riff.h"

#include <algorithm>
#include <iterator>

namespace vdv {

/// Whether a stream handler or compression code stands for DV, in any letter case.
constexpr bool isCodec(std::uint32_t code) {
    constexpr std::uint32_t codecs[] = {riff::fourcc("DVSD"), riff::fourcc("DV25"), riff::fourcc("DV50"),
                                        riff::fourcc("DVHD"), riff::fourcc("DVSL"), riff::fourcc("DVH1"),
                                        riff::fourcc("DVCP"), riff::fourcc("DVC "), riff::fourcc("DVIS"),
                                        riff::fourcc("CDVC"), riff::fourcc("PDVC")};
    std::uint32_t upper = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t character = code >> shift & 0xFF;
        upper |= (character >= 'a' && character <= 'z' ? character - 0x20 : character) << shift;
    }
    return std::find(std::begin(codecs), std::end(codecs), upper) != std::end(codecs);
}

} // namespace vdv
