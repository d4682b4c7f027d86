#include "tools/image_file.h"

#include "tools/failure.h"
#include "tools/text.h"

#include "marvo/com/com_ptr.h"

#include <wincodec.h>

namespace dvrec {

namespace {

struct Format {
    const wchar_t* extension;
    const GUID& container;
};

const Format formats[] = {
    {L".bmp", GUID_ContainerFormatBmp},
    {L".png", GUID_ContainerFormatPng},
    {L".jpg", GUID_ContainerFormatJpeg},
    {L".jpeg", GUID_ContainerFormatJpeg},
};

const Format* formatOf(const std::wstring& name) {
    for (const Format& format : formats) {
        if (hasExtension(name, format.extension)) {
            return &format;
        }
    }
    return nullptr;
}

HRESULT encode(IWICImagingFactory& factory, const dvPicture& picture, const GUID& container,
               const std::wstring& path) {
    vwin::com_<IWICStream> stream;
    vwin::com_<IWICBitmapEncoder> encoder;
    vwin::com_<IWICBitmapFrameEncode> frame;
    vwin::com_<IWICBitmap> bitmap;
    const unsigned stride = picture.width * 4;
    HRESULT result = factory.CreateStream(stream.put());
    if (SUCCEEDED(result)) {
        result = stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE);
    }
    if (SUCCEEDED(result)) {
        result = factory.CreateEncoder(container, nullptr, encoder.put());
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
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    if (SUCCEEDED(result)) {
        result = frame->SetPixelFormat(&format);
    }
    if (SUCCEEDED(result)) {
        result = factory.CreateBitmapFromMemory(picture.width, picture.height, GUID_WICPixelFormat32bppBGR,
                                                stride, static_cast<UINT>(picture.pixels.size()),
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

bool isImageName(const std::wstring& name) {
    return formatOf(name) != nullptr;
}

bool saveImage(const dvPicture& picture, const std::wstring& name, const std::wstring& path,
               std::string& fault) {
    vwin::com_<IWICImagingFactory> factory;
    if (!factory.create(CLSID_WICImagingFactory)) {
        fault = "the system has no imaging component (WIC)";
        return false;
    }
    const HRESULT result = encode(*factory.ptr(), picture, formatOf(name)->container, path);
    if (FAILED(result)) {
        fault = "the system's imaging component refuses: " + systemMessage(static_cast<DWORD>(result));
    }
    return SUCCEEDED(result);
}

} // namespace dvrec
