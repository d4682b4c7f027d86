// Pictures of frames.
#include "marvo/core/text.h"
#include "marvo/flat/frame_notes.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/handles.h"
#include "marvo/flat/structure.h"
#include "marvo/flat/text.h"
#include "marvo/picture/frame_decoder.h"

using namespace flat;

namespace {

constexpr unsigned bytesPerPixel = 4;

struct Decoder {
    Lock lock;
    dvFrameDecoder decoder MARVO_GUARDED_BY(lock);
    dvPicture picture MARVO_GUARDED_BY(lock);
};

Handles<marvo_decoder, Decoder>& decoders() {
    static Handles<marvo_decoder, Decoder> all(2, "decoder");
    return all;
}

/// The fourth byte of each pixel, which decoders leave as it comes.
void copyPixels(const std::vector<unsigned char>& from, unsigned char* to) {
    constexpr unsigned char opaque = 255;
    for (std::size_t at = 0; at + bytesPerPixel <= from.size(); at += bytesPerPixel) {
        to[at] = from[at];
        to[at + 1] = from[at + 1];
        to[at + 2] = from[at + 2];
        to[at + 3] = opaque;
    }
}

} // namespace

int MARVO_CALL marvo_decoder_open(marvo_decoder** decoder) {
    return guarded([&] {
        if (!decoder) {
            fail(MARVO_E_ARGUMENT, "There is no place for the decoder: it is null.");
        }
        *decoder = decoders().add(std::make_shared<Decoder>());
    });
}

int MARVO_CALL marvo_decoder_decode(marvo_decoder* decoder, const void* frame, marvo_u32 bytes, void* pixels,
                                    marvo_u32 capacity, marvo_picture_info* info) {
    return guarded([&] {
        const std::shared_ptr<Decoder> object = decoders().get(decoder);
        Answer<marvo_picture_info> to(info, "picture information", true);
        const vdv::FrameBytes all = needFrame(frame, bytes);
        const LockGuard guard(object->lock);
        if (!object->decoder.decode(all.data(), all.size(), object->picture)) {
            fail(MARVO_E_SYSTEM, utf8(object->decoder.explanation()));
        }
        const dvPicture& picture = object->picture;
        to->width = picture.width;
        to->height = picture.height;
        to->stride = picture.width * bytesPerPixel;
        to->bytes = static_cast<marvo_u32>(picture.pixels.size());
        to->aspect_width = picture.aspectNumerator;
        to->aspect_height = picture.aspectDenominator;
        to.give();
        if (!pixels && capacity == 0) {
            return;
        }
        if (!pixels || capacity < picture.pixels.size()) {
            fail(MARVO_E_BUFFER,
                 vcore::format("The buffer has %u bytes; the picture has %u.", pixels ? capacity : 0,
                               static_cast<unsigned>(picture.pixels.size())));
        }
        copyPixels(picture.pixels, static_cast<unsigned char*>(pixels));
    });
}

int MARVO_CALL marvo_decoder_close(marvo_decoder* decoder) {
    return guarded([&] { decoders().remove(decoder); });
}
