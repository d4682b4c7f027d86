#include "tools/decoded_picture.h"

#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/com/com_ptr.h"
#include "marvo/core/handle.h"
#include "marvo/video/alloc.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/enum_pins.h"
#include "marvo/video/input_pin.h"
#include "marvo/video/output_pin.h"
#include "marvo/video/sink.h"

#include <cstring>
#include <memory>

namespace dvrec {

namespace {

/// The system's DV video decoder and its pins.
constexpr CLSID decoderClass = {0xB1B77C00, 0xC3E4, 0x11CF, {0xAF, 0x79, 0x00, 0xAA, 0x00, 0xB6, 0x7A, 0x42}};
constexpr wchar_t decoderInput[] = L"XForm In";
constexpr wchar_t decoderOutput[] = L"XForm Out";

constexpr DWORD patience_ms = 5000;

/// Sends one frame.
class FrameSource final : public vvideo::dvBaseFilter {
public:
    FrameSource() : output_(std::make_unique<vvideo::dvOutputPin>(this, L"Output")) {}

    /// Prepares the pin for a frame; before the pin is connected.
    bool prepare(vdv::FrameBytes frame) {
        const auto size = static_cast<unsigned long>(frame.size());
        vvideo::dvMediaType type;
        type.initVideoType(size, 0xFFFFFFFFul);
        output_->setType(type);
        output_->setMem(allocator_);
        return allocator_.init(size, 1, 0, 1);
    }

    /// Hands the frame to the decoder, of which it comes back decoded or refused.
    bool send(vdv::FrameBytes frame) {
        vwin::com_<IMediaSample> sample;
        BYTE* data = nullptr;
        if (!allocator_.getSample(sample.put(), -1, -1) || FAILED(sample->GetPointer(&data))) {
            return false;
        }
        std::memcpy(data, frame.data(), frame.size());
        sample->SetActualDataLength(static_cast<long>(frame.size()));
        sample->SetSyncPoint(TRUE);
        return output_->deliver(sample.ptr());
    }

    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override {
        return vvideo::enumeratePins({output_.get()}, out);
    }

private:
    std::unique_ptr<vvideo::dvOutputPin> output_;
    vvideo::dvAlloc allocator_;
};

/// Keeps the first picture that arrives. `receive` may come on a thread of the decoder's.
class PictureSink final : public vvideo::dvBaseFilter, public vvideo::dvSink {
public:
    PictureSink()
        : input_(std::make_unique<vvideo::dvInputPin>(this, L"Input", 0)),
          arrived_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        input_->registerSink(this);
    }
    ~PictureSink() override { input_->unregisterSink(); }

    /// Waits for the picture; false when none comes in time.
    bool take(Picture& picture) {
        if (WaitForSingleObject(arrived_.get(), patience_ms) != WAIT_OBJECT_0) {
            return false;
        }
        picture = std::move(picture_);
        return !picture.pixels.empty();
    }

    bool acceptFormat(vvideo::dvInputPin*, vvideo::dvMediaType& type) override {
        return type.majortype == MEDIATYPE_Video && bytesPerPixel(type) != 0 && type.bmiHeader() != nullptr;
    }

    bool receive(vvideo::dvInputPin*, IMediaSample* sample) override {
        BYTE* data = nullptr;
        if (WaitForSingleObject(arrived_.get(), 0) != WAIT_OBJECT_0 && sample &&
            SUCCEEDED(sample->GetPointer(&data))) {
            keep(data, sample->GetActualDataLength());
            SetEvent(arrived_.get());
        }
        return true;
    }

    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** out) override {
        return vvideo::enumeratePins({input_.get()}, out);
    }

private:
    static unsigned bytesPerPixel(const vvideo::dvMediaType& type) {
        return type.subtype == MEDIASUBTYPE_RGB32 ? 4 : type.subtype == MEDIASUBTYPE_RGB24 ? 3 : 0;
    }

    void keep(const BYTE* data, long length) {
        const vvideo::dvMediaType type(input_->type());
        const BITMAPINFOHEADER* const header = type.bmiHeader();
        if (header && length > 0) {
            takePicture(*header, bytesPerPixel(type), data, static_cast<unsigned long>(length), picture_);
        }
    }

    std::unique_ptr<vvideo::dvInputPin> input_;
    vcore::handle arrived_;
    Picture picture_;
};

/// Decoders show a reduced picture unless they are told otherwise; one that cannot be told shows what it
/// does.
void askForFullSize(IBaseFilter* decoder) {
    vwin::com_<IIPDVDec> resolution;
    if (SUCCEEDED(decoder->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(resolution.put())))) {
        resolution->put_IPDisplay(DVDECODERRESOLUTION_720x480);
    }
}

} // namespace

bool decodePicture(vdv::FrameBytes frame, Picture& picture, std::string& fault) {
    vwin::com_fg graph;
    if (!graph.init(true)) {
        fault = "the system cannot make a filter graph";
        return false;
    }
    vwin::com_<FrameSource> source;
    source.attach(new FrameSource);
    vwin::com_<PictureSink> sink;
    sink.attach(new PictureSink);
    vwin::com_filter decoder;
    if (!graph.add(decoderClass, decoder, L"dvDecode")) {
        fault = "this system has no DV video decoder; install one";
        return false;
    }
    askForFullSize(decoder.filter());
    const bool made =
        source->prepare(frame) && graph.add(source.ptr(), L"frame") && graph.add(sink.ptr(), L"picture") &&
        graph.connect(source.ptr(), L"Output", decoder.filter(), decoderInput, nullptr) &&
        graph.connect(decoder.filter(), decoderOutput, sink.ptr(), L"Input", nullptr) && graph.run(0);
    if (!made) {
        fault = "the DV video decoder does not take frames of this kind, or gives no RGB picture";
    }
    const bool decoded = made && source->send(frame) && sink->take(picture);
    if (made && !decoded) {
        fault = "the DV video decoder gave no picture";
    }
    decoder.clear();
    graph.done(true);
    return decoded;
}

} // namespace dvrec
