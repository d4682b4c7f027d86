#include "devices/media_type.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <utility>

namespace devices {

namespace {

const DWORD dvsd_fourcc = MAKEFOURCC('d', 'v', 's', 'd');
const DWORD source_pack_50_fields = 0x00200000; // the 50/60 flag: bit 5 of the third byte of a source pack

/// How the system names what lies so, in the order of dv_pixels.
const struct form {
    const GUID* subtype;
    DWORD compression;
} forms[] = {{&MEDIASUBTYPE_RGB32, BI_RGB},
             {&MEDIASUBTYPE_RGB24, BI_RGB},
             {&MEDIASUBTYPE_YUY2, MAKEFOURCC('Y', 'U', 'Y', '2')},
             {&MEDIASUBTYPE_UYVY, MAKEFOURCC('U', 'Y', 'V', 'Y')}};

VIDEOINFOHEADER picture_header(const dv_system& system, DWORD compression, WORD bits, size_t bytes) {
    VIDEOINFOHEADER header{};
    SetRect(&header.rcSource, 0, 0, system.width, system.height);
    header.rcTarget = header.rcSource;
    header.dwBitRate = static_cast<DWORD>(bytes * 8 * static_cast<uint64_t>(system.rate) / system.rate_scale);
    header.AvgTimePerFrame = system.period;
    header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    header.bmiHeader.biWidth = system.width;
    header.bmiHeader.biHeight = system.height;
    header.bmiHeader.biPlanes = 1;
    header.bmiHeader.biBitCount = bits;
    header.bmiHeader.biCompression = compression;
    header.bmiHeader.biSizeImage = static_cast<DWORD>(bytes);
    return header;
}

} // namespace

media_type::media_type(const AM_MEDIA_TYPE& other) {
    type_ = other;
    type_.pUnk = nullptr;
    type_.pbFormat = nullptr;
    type_.cbFormat = 0;
    if (!set_format(other.formattype, other.pbFormat, other.pbFormat ? other.cbFormat : 0)) {
        clear();
    }
}

media_type::media_type(media_type&& other) noexcept : type_(std::exchange(other.type_, AM_MEDIA_TYPE{})) {}

media_type& media_type::operator=(media_type other) noexcept {
    std::swap(type_, other.type_);
    return *this;
}

media_type media_type::interleaved(const dv_system& system) {
    // A DVINFO holds the source and control packs of sound and picture as the tape has them, without their
    // names: 48 kHz 16-bit sound locked to the picture, 4:3 picture in colour, nothing known about the
    // recording's date.
    DVINFO info{};
    const DWORD fields = system.pal ? source_pack_50_fields : 0;
    info.dwDVAAuxSrc = (system.pal ? 0xD1C030D0 : 0xD1C030CE) | fields;
    info.dwDVAAuxSrc1 = info.dwDVAAuxSrc | 0x00000F00;
    info.dwDVAAuxCtl = 0xFFA0CF3F;
    info.dwDVAAuxCtl1 = info.dwDVAAuxCtl;
    info.dwDVVAuxSrc = 0xFF00FFFF | fields;
    info.dwDVVAuxCtl = 0xFFFCC83F;

    media_type result;
    result.type_.majortype = MEDIATYPE_Interleaved;
    result.type_.subtype = MEDIASUBTYPE_dvsd;
    result.type_.bFixedSizeSamples = TRUE;
    result.type_.lSampleSize = static_cast<ULONG>(system.frame_bytes);
    if (!result.set_format(FORMAT_DvInfo, &info, sizeof info)) {
        result.clear();
    }
    return result;
}

media_type media_type::dv_video(const dv_system& system) {
    const VIDEOINFOHEADER header = picture_header(system, dvsd_fourcc, 24, system.frame_bytes);
    media_type result;
    result.type_.majortype = MEDIATYPE_Video;
    result.type_.subtype = MEDIASUBTYPE_dvsd;
    result.type_.bFixedSizeSamples = TRUE;
    result.type_.lSampleSize = static_cast<ULONG>(system.frame_bytes);
    if (!result.set_format(FORMAT_VideoInfo, &header, sizeof header)) {
        result.clear();
    }
    return result;
}

media_type media_type::picture(const dv_system& system, dv_pixels pixels) {
    const form& wanted = forms[static_cast<int>(pixels)];
    const size_t bytes = static_cast<size_t>(system.width) * system.height * pixel_bytes(pixels);
    const VIDEOINFOHEADER header =
        picture_header(system, wanted.compression, static_cast<WORD>(pixel_bytes(pixels) * CHAR_BIT), bytes);
    media_type result;
    result.type_.majortype = MEDIATYPE_Video;
    result.type_.subtype = *wanted.subtype;
    result.type_.bFixedSizeSamples = TRUE;
    result.type_.lSampleSize = static_cast<ULONG>(bytes);
    if (!result.set_format(FORMAT_VideoInfo, &header, sizeof header)) {
        result.clear();
    }
    return result;
}

dv_pixels media_type::pixels(const AM_MEDIA_TYPE& type) {
    const form* const found =
        std::find_if(forms, std::end(forms), [&](const form& one) { return *one.subtype == type.subtype; });
    return found == std::end(forms) ? dv_pixels::rgb32 : static_cast<dv_pixels>(found - forms);
}

void media_type::clear() {
    CoTaskMemFree(type_.pbFormat);
    type_ = AM_MEDIA_TYPE{};
}

HRESULT media_type::copy_to(AM_MEDIA_TYPE& out) const {
    media_type copy(*this);
    out = std::exchange(copy.type_, AM_MEDIA_TYPE{});
    return out.majortype == type_.majortype ? S_OK : E_OUTOFMEMORY;
}

bool media_type::fits(const AM_MEDIA_TYPE& wanted) const {
    const auto agrees = [](const GUID& mine, const GUID& theirs) {
        return theirs == GUID_NULL || mine == theirs;
    };
    if (!agrees(type_.majortype, wanted.majortype) || !agrees(type_.subtype, wanted.subtype) ||
        !agrees(type_.formattype, wanted.formattype)) {
        return false;
    }
    if (wanted.formattype == GUID_NULL || !wanted.pbFormat || wanted.cbFormat == 0) {
        return true;
    }
    return wanted.cbFormat == type_.cbFormat &&
           std::memcmp(wanted.pbFormat, type_.pbFormat, type_.cbFormat) == 0;
}

const VIDEOINFOHEADER* media_type::video_info(const AM_MEDIA_TYPE& type) {
    const bool usable =
        type.formattype == FORMAT_VideoInfo && type.pbFormat && type.cbFormat >= sizeof(VIDEOINFOHEADER);
    return usable ? reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat) : nullptr;
}

const DVINFO* media_type::dv_info(const AM_MEDIA_TYPE& type) {
    const bool usable = type.formattype == FORMAT_DvInfo && type.pbFormat && type.cbFormat >= sizeof(DVINFO);
    return usable ? reinterpret_cast<const DVINFO*>(type.pbFormat) : nullptr;
}

const dv_system* media_type::interleaved_system(const AM_MEDIA_TYPE& type) {
    const DVINFO* info = dv_info(type);
    if (type.majortype != MEDIATYPE_Interleaved || type.subtype != MEDIASUBTYPE_dvsd || !info) {
        return nullptr;
    }
    return info->dwDVAAuxSrc & source_pack_50_fields ? &dv_system::pal_system() : &dv_system::ntsc_system();
}

const dv_system* media_type::dv_video_system(const AM_MEDIA_TYPE& type) {
    const VIDEOINFOHEADER* info = video_info(type);
    if (type.majortype != MEDIATYPE_Video || type.subtype != MEDIASUBTYPE_dvsd || !info ||
        info->bmiHeader.biWidth != dv_system::pal_system().width) {
        return nullptr;
    }
    const LONG height = info->bmiHeader.biHeight;
    // 486 and 488 lines are what some capture drivers name a 480-line frame.
    if (height == dv_system::pal_system().height) {
        return &dv_system::pal_system();
    }
    return height >= 480 && height <= 488 ? &dv_system::ntsc_system() : nullptr;
}

bool media_type::set_format(const GUID& form, const void* block, ULONG size) {
    type_.formattype = form;
    if (!block || size == 0) {
        return true;
    }
    type_.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(size));
    if (!type_.pbFormat) {
        return false;
    }
    std::memcpy(type_.pbFormat, block, size);
    type_.cbFormat = size;
    return true;
}

} // namespace devices
