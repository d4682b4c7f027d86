#include "app/window/png_file.h"

#include "app/window/system_message.h"
#include "marvo.h"

#include <wincodec.h>

namespace app {

namespace {

constexpr double resolution_dpi = 72.0;

HRESULT encode(IWICImagingFactory& factory, const PixelView& picture, double aspect,
               const std::wstring& path) {
    vwin::com_<IWICStream> stream;
    vwin::com_<IWICBitmapEncoder> encoder;
    vwin::com_<IWICBitmapFrameEncode> frame;
    vwin::com_<IWICBitmap> bitmap;
    const UINT width = static_cast<UINT>(picture.width);
    const UINT height = static_cast<UINT>(picture.height);
    HRESULT result = factory.CreateStream(stream.put());
    if (SUCCEEDED(result)) {
        result = stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE);
    }
    if (SUCCEEDED(result)) {
        result = factory.CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.put());
    }
    if (SUCCEEDED(result)) {
        result = encoder->Initialize(stream.ptr(), WICBitmapEncoderNoCache);
    }
    if (SUCCEEDED(result)) {
        result = encoder->CreateNewFrame(frame.put(), nullptr);
    }
    if (SUCCEEDED(result)) {
        result = frame->Initialize(nullptr);
    }
    if (SUCCEEDED(result)) {
        result = frame->SetSize(width, height);
    }
    if (SUCCEEDED(result)) {
        result = frame->SetResolution(resolution_dpi / aspect, resolution_dpi);
    }
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    if (SUCCEEDED(result)) {
        result = frame->SetPixelFormat(&format);
    }
    if (SUCCEEDED(result)) {
        auto* bytes = static_cast<BYTE*>(const_cast<void*>(picture.pixels));
        result = factory.CreateBitmapFromMemory(width, height, GUID_WICPixelFormat32bppBGR, width * 4,
                                                width * height * 4, bytes, bitmap.put());
    }
    // The frame converts to the pixel format that it has chosen.
    if (SUCCEEDED(result)) {
        result = frame->WriteSource(bitmap.ptr(), nullptr);
    }
    if (SUCCEEDED(result)) {
        result = frame->Commit();
    }
    return SUCCEEDED(result) ? encoder->Commit() : result;
}

} // namespace

bool writePng(const PixelView& picture, double aspect, const std::wstring& path, std::wstring& fault) {
    vwin::com_<IWICImagingFactory> factory;
    HRESULT result = CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IWICImagingFactory, reinterpret_cast<void**>(factory.put()));
    if (SUCCEEDED(result)) {
        result = encode(*factory.ptr(), picture, aspect, path);
    }
    if (FAILED(result)) {
        fault = systemMessage(static_cast<unsigned long>(result));
    }
    return SUCCEEDED(result);
}

} // namespace app
