#include "marvo/picture/picture_file.h"

#include "marvo/com/com_ptr.h"

#include <wincodec.h>

#include <cwchar>

namespace {

/// Who shows the picture learns of its pixels' shape from the resolutions alone.
constexpr double dotsPerInch = 96;

const GUID* containerOf(const wchar_t* name) {
    static const struct {
        const wchar_t* extension;
        const GUID& container;
    } formats[] = {
        {L".bmp", GUID_ContainerFormatBmp},
        {L".png", GUID_ContainerFormatPng},
        {L".jpg", GUID_ContainerFormatJpeg},
        {L".jpeg", GUID_ContainerFormatJpeg},
    };
    const wchar_t* const extension = name ? std::wcsrchr(name, L'.') : nullptr;
    for (const auto& format : formats) {
        if (extension && _wcsicmp(extension, format.extension) == 0) {
            return &format.container;
        }
    }
    return nullptr;
}

HRESULT encode(const dvPicture& picture, const GUID& container, const wchar_t* path) {
    vwin::com_<IWICImagingFactory> factory;
    vwin::com_<IWICStream> stream;
    vwin::com_<IWICBitmapEncoder> encoder;
    vwin::com_<IWICBitmapFrameEncode> frame;
    vwin::com_<IWICBitmap> bitmap;
    HRESULT result = CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IWICImagingFactory, reinterpret_cast<void**>(factory.put()));
    if (SUCCEEDED(result)) {
        result = factory->CreateStream(stream.put());
    }
    if (SUCCEEDED(result)) {
        result = stream->InitializeFromFilename(path, GENERIC_WRITE);
    }
    if (SUCCEEDED(result)) {
        result = factory->CreateEncoder(container, nullptr, encoder.put());
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
        result = frame->SetSize(picture.width, picture.height);
    }
    if (SUCCEEDED(result)) {
        result = frame->SetResolution(dotsPerInch / picture.pixelAspect(), dotsPerInch);
    }
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    if (SUCCEEDED(result)) {
        result = frame->SetPixelFormat(&format);
    }
    if (SUCCEEDED(result)) {
        result = factory->CreateBitmapFromMemory(picture.width, picture.height, GUID_WICPixelFormat32bppBGR,
                                                 picture.width * 4, static_cast<UINT>(picture.pixels.size()),
                                                 const_cast<BYTE*>(picture.pixels.data()), bitmap.put());
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

bool dvPictureFile::hasFormat(const wchar_t* name) {
    return containerOf(name) != nullptr;
}

bool dvPictureFile::write(const dvPicture& picture, const wchar_t* path, const wchar_t* name) {
    const GUID* const container = containerOf(name ? name : path);
    const HRESULT result = container && picture.width != 0 ? encode(picture, *container, path) : E_INVALIDARG;
    error_ = FAILED(result) ? result : 0;
    return SUCCEEDED(result);
}
