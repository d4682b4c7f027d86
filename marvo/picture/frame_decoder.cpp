#include "marvo/picture/frame_decoder.h"

#include "marvo/core/guarded.h"
#include "marvo/dv/frame_notes.h"
#include "marvo/picture/decoder_graph.h"

struct dvFrameDecoder::Work {
    picture::DecoderGraph graph;
    std::wstring explanation;

    bool decode(vdv::FrameBytes frame, dvPicture& picture) {
        const auto bytes = static_cast<unsigned long>(frame.size());
        explanation.clear();
        if (bytes != frame.size() || !vdv::isFrameSize(bytes)) {
            explanation = L"What has " + std::to_wstring(frame.size()) + L" bytes is no DV frame.";
            return false;
        }
        if (graph.frameBytes() != bytes && !graph.make(bytes, explanation)) {
            return false;
        }
        if (!graph.decode(frame, picture, explanation)) {
            return false;
        }
        const dvAspect aspect = dvFrameNotes::aspect(frame.data(), frame.size());
        picture.aspectNumerator = aspect.width;
        picture.aspectDenominator = aspect.height;
        return true;
    }
};

dvFrameDecoder::dvFrameDecoder() = default;
dvFrameDecoder::~dvFrameDecoder() = default;

bool dvFrameDecoder::decode(const void* frame, std::size_t bytes, dvPicture& picture) {
    const bool decoded = vcore::guarded(false, [&] {
        if (!work_) {
            work_ = std::make_unique<Work>();
        }
        return work_->decode({static_cast<const unsigned char*>(frame), frame ? bytes : 0}, picture);
    });
    if (!decoded) {
        picture = dvPicture();
    }
    return decoded;
}

const wchar_t* dvFrameDecoder::explanation() const {
    return work_ ? work_->explanation.c_str() : L"";
}

void dvFrameDecoder::close() {
    work_.reset();
}
