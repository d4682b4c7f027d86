#include "marvo/picture/decoder_graph.h"

#include "marvo/core/handle.h"
#include "marvo/picture/taken_picture.h"
#include "marvo/video/alloc.h"
#include "marvo/video/base_filter.h"
#include "marvo/video/enum_pins.h"
#include "marvo/video/input_pin.h"
#include "marvo/video/output_pin.h"
#include "marvo/video/sink.h"

#include <cstring>

namespace picture {

namespace {

/// The system's DV video decoder and its pins.
constexpr CLSID decoderClass = {0xB1B77C00, 0xC3E4, 0x11CF, {0xAF, 0x79, 0x00, 0xAA, 0x00, 0xB6, 0x7A, 0x42}};
constexpr wchar_t decoderInput[] = L"XForm In";
constexpr wchar_t decoderOutput[] = L"XForm Out";

constexpr DWORD patience_ms = 5000;

/// Decoders show a reduced picture unless they are told otherwise; one that cannot be told shows what it
/// does.
void askForFullSize(IBaseFilter* decoder) {
    vwin::com_<IIPDVDec> resolution;
    if (SUCCEEDED(decoder->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(resolution.put())))) {
        resolution->put_IPDisplay(DVDECODERRESOLUTION_720x480);
    }
}

} // namespace

/// Sends frames.
class FrameSource final : public vvideo::dvBaseFilter {
public:
    FrameSource() : output_(std::make_unique<vvideo::dvOutputPin>(this, L"Output")) {}

    /// Prepares the pin for frames of that size; before the pin is connected.
    bool prepare(unsigned long frameBytes) {
        vvideo::dvMediaType type;
        type.initVideoType(frameBytes, 0xFFFFFFFFul);
        output_->setType(type);
        output_->setMem(allocator_);
        return allocator_.init(frameBytes, 1, 0, 1);
    }

    /// Hands a frame to the decoder, which takes or refuses it.
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

/// Keeps the first picture that arrives after it was told to wait for one. `receive` may come on a thread of
/// the decoder's.
class PictureSink final : public vvideo::dvBaseFilter, public vvideo::dvSink {
public:
    PictureSink()
        : input_(std::make_unique<vvideo::dvInputPin>(this, L"Input", 0)),
          arrived_(CreateEventW(nullptr, TRUE, TRUE, nullptr)) {
        input_->registerSink(this);
    }
    ~PictureSink() override { input_->unregisterSink(); }

    /// The next picture is the one to keep. It is put into the memory of `former`.
    void expect(dvPicture& former) {
        std::swap(picture_, former);
        picture_.width = 0;
        ResetEvent(arrived_.get());
    }

    /// Waits for that picture; false when none comes in time.
    bool take(dvPicture& picture) {
        if (WaitForSingleObject(arrived_.get(), patience_ms) != WAIT_OBJECT_0) {
            return false;
        }
        std::swap(picture, picture_);
        return picture.width != 0;
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
    dvPicture picture_;
};

DecoderGraph::DecoderGraph() = default;

DecoderGraph::~DecoderGraph() {
    takeApart();
}

bool DecoderGraph::make(unsigned long frameBytes, std::wstring& fault) {
    takeApart();
    if (!graph_.init(true)) {
        fault = L"The system cannot make a filter graph.";
        return false;
    }
    if (!graph_.add(decoderClass, decoder_, L"dvDecode")) {
        fault = L"There is no DV video decoder on this system; install one.";
    } else if (!connect(frameBytes)) {
        fault = L"The DV video decoder does not take frames of this kind, or gives no RGB picture.";
    } else {
        frameBytes_ = frameBytes;
        return true;
    }
    takeApart();
    return false;
}

bool DecoderGraph::connect(unsigned long frameBytes) {
    source_.attach(new FrameSource);
    sink_.attach(new PictureSink);
    askForFullSize(decoder_.filter());
    return source_->prepare(frameBytes) && graph_.add(source_.ptr(), L"frame") &&
           graph_.add(sink_.ptr(), L"picture") &&
           graph_.connect(source_.ptr(), L"Output", decoder_.filter(), decoderInput, nullptr) &&
           graph_.connect(decoder_.filter(), decoderOutput, sink_.ptr(), L"Input", nullptr) && graph_.run(0);
}

void DecoderGraph::takeApart() {
    frameBytes_ = 0;
    decoder_.clear();
    graph_.done(true);
    source_.clear();
    sink_.clear();
}

bool DecoderGraph::decode(vdv::FrameBytes frame, dvPicture& picture, std::wstring& fault) {
    sink_->expect(picture);
    if (source_->send(frame) && sink_->take(picture)) {
        return true;
    }
    takeApart();
    fault = L"The DV video decoder gave no picture.";
    return false;
}

} // namespace picture
