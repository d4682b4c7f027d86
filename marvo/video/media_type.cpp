#include "marvo/video/media_type.h"

#include <algorithm>
#include <cstring>

namespace vvideo {

namespace {

constexpr long ntscTimePerFrame = vdv::system525.timePerFrame_100ns;
constexpr long palTimePerFrame = vdv::system625.timePerFrame_100ns;
constexpr long dvWidth = static_cast<long>(vdv::system625.width);

// The heights stand here and not in the table of systems, because they are none of the system's but what the
// partner of each type expects: 480 coded lines of 525/60 in DV video, 486 lines of a studio picture in the
// types of `initDVType`, and 488 where only DV information tells it.
constexpr DWORD dvBitRate = 28800000;
constexpr unsigned long defaultTime = 0xFFFFFFFF;
constexpr DWORD dvsd = MAKEFOURCC('d', 'v', 's', 'd');

/// Set in the audio source pack of 50-field systems.
constexpr DWORD fiftyFields = 0x00200000;

/// The source and control packs that describe a DV stream: 48 kHz, 16 bits, two channels, 4:3.
constexpr DVINFO palInfo = {0xD1E030D0, 0xFFA0CF3F, 0xD1E03FD0, 0xFFA0CF3F, 0xFF20FFFF, 0xFFFDC83F, {0, 0}};
constexpr DVINFO ntscInfo = {0xD1C030CF, 0xFFA0CF3F, 0xD1C03FCF, 0xFFA0CF3F, 0xFF00FFFF, 0xFFFCC83F, {0, 0}};

BYTE* allocBlock(unsigned long size) {
    return static_cast<BYTE*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size));
}

bool isPal(const DVINFO& info) {
    return (info.dwDVAAuxSrc & fiftyFields) != 0;
}

/// Bits per second of one frame of so many bytes per `timePerFrame` 100 ns.
DWORD bitRate(unsigned long frameSize, unsigned long timePerFrame) {
    const unsigned long long most = 0xFFFFFFFF;
    return timePerFrame ? static_cast<DWORD>(std::min(frameSize * 80000000ull / timePerFrame, most)) : 0;
}

void fillHeader(BITMAPINFOHEADER& header, long width, long height, int bitCount, DWORD compression,
                DWORD size) {
    header.biSize = sizeof(header);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bitCount);
    header.biCompression = compression;
    header.biSizeImage = size;
}

/// Bytes of an uncompressed picture; 0 for the codes of packed formats, and when 32 bits do not hold it.
unsigned long pictureBytes(unsigned long columns, unsigned long lines, int bitCount) {
    if (bitCount < 8) {
        return 0;
    }
    const unsigned long long pixels = 1ull * columns * lines;
    const auto pixelBytes = static_cast<unsigned long>(bitCount / 8);
    return pixels > 0xFFFFFFFFul / pixelBytes ? 0 : static_cast<unsigned long>(pixels) * pixelBytes;
}

const GUID& uncompressedSubtype(int bitCount) {
    switch (bitCount) {
    case -2:
        return MEDIASUBTYPE_UYVY;
    case -1:
        return MEDIASUBTYPE_YUY2;
    case 24:
        return MEDIASUBTYPE_RGB24;
    default:
        return MEDIASUBTYPE_RGB32;
    }
}

} // namespace

void initMediaType(_AMMediaType& mt, unsigned long cbFormat) {
    std::memset(static_cast<void*>(&mt), 0, sizeof(mt));
    if (cbFormat && (mt.pbFormat = allocBlock(cbFormat)) != nullptr) {
        mt.cbFormat = cbFormat;
    }
}

void copyMediaType(_AMMediaType& dst, const _AMMediaType* src) {
    if (!src) {
        return;
    }
    const BYTE* const block = src->pbFormat;
    std::memcpy(static_cast<void*>(&dst), src, sizeof(dst));
    if (!src->cbFormat) {
        return;
    }
    dst.pbFormat = block ? allocBlock(dst.cbFormat) : nullptr;
    if (dst.pbFormat) {
        std::memcpy(dst.pbFormat, block, dst.cbFormat);
    } else {
        dst.cbFormat = 0;
    }
}

void clearMediaType(_AMMediaType& mt) {
    if (mt.pbFormat) {
        HeapFree(GetProcessHeap(), 0, mt.pbFormat);
    }
    initMediaType(mt, 0);
}

static_assert(sizeof(dvMediaType) == sizeof(_AMMediaType));

dvMediaType::dvMediaType(const _AMMediaType* source) : dvMediaType() {
    copyFrom(source);
}

/// Into an empty object. A foreign type without a format block may hold a stray pointer; it is not ours to
/// free.
void dvMediaType::copyFrom(const _AMMediaType* source) {
    copyMediaType(*this, source);
    if (!cbFormat) {
        pbFormat = nullptr;
    }
}

_AMMediaType* dvMediaType::operator=(const _AMMediaType* source) {
    if (source != this) {
        clearMediaType(*this);
        copyFrom(source);
    }
    return this;
}

void dvMediaType::initType(unsigned long size, const void* format) {
    initMediaType(*this, size);
    if (format && pbFormat) {
        std::memcpy(pbFormat, format, size);
    }
}

/// Makes this a video type with a zeroed video block. `allocated` bytes may be more than the block tells.
tagVIDEOINFOHEADER* dvMediaType::initVideoBlock(unsigned long allocated) {
    initMediaType(*this, allocated);
    majortype = MEDIATYPE_Video;
    formattype = FORMAT_VideoInfo;
    bFixedSizeSamples = TRUE;
    if (pbFormat) {
        cbFormat = sizeof(VIDEOINFOHEADER);
    }
    return videoInfo();
}

void dvMediaType::initVideoType(unsigned long size, unsigned long time) {
    VIDEOINFOHEADER* const info = initVideoBlock(sizeof(VIDEOINFOHEADER));
    subtype = MEDIASUBTYPE_dvsd;
    lSampleSize = 1;
    if (!info) {
        return;
    }
    const bool ntsc = size == ntscFrameSize;
    if (time == defaultTime) {
        time = ntsc ? ntscTimePerFrame : palTimePerFrame;
    }
    const long lines = ntsc ? 480 : 576;
    info->rcSource = info->rcTarget = {0, 0, dvWidth, lines};
    info->dwBitRate = bitRate(size, time);
    info->AvgTimePerFrame = time;
    fillHeader(info->bmiHeader, dvWidth, lines, 24, dvsd, size);
}

void dvMediaType::initVideoType(unsigned long columns, unsigned long lines, int bitCount, int time) {
    // More than the header, so that a filter finds room for the colour masks that some formats put behind it.
    constexpr unsigned long allocated = sizeof(VIDEOINFOHEADER) + 100;
    VIDEOINFOHEADER* const info = initVideoBlock(allocated);
    subtype = uncompressedSubtype(bitCount);
    lSampleSize = pictureBytes(columns, lines, bitCount);
    if (!info) {
        return;
    }
    if (time < 0) {
        time = lines > 486 ? palTimePerFrame : ntscTimePerFrame;
    }
    const long right = static_cast<long>(columns);
    const long bottom = static_cast<long>(lines);
    info->rcSource = info->rcTarget = {0, 0, right, bottom};
    info->dwBitRate = bitRate(lSampleSize, static_cast<unsigned long>(time));
    info->AvgTimePerFrame = time;
    fillHeader(info->bmiHeader, right, bottom, bitCount, BI_RGB, lSampleSize);
}

void dvMediaType::initDVType(unsigned long size, bool video) {
    if (video) {
        if (VIDEOINFOHEADER* const info = initVideoBlock(sizeof(VIDEOINFOHEADER))) {
            const bool pal = size > ntscFrameSize;
            info->dwBitRate = dvBitRate;
            info->AvgTimePerFrame = pal ? palTimePerFrame : ntscTimePerFrame;
            fillHeader(info->bmiHeader, dvWidth, pal ? 576 : 486, 24, dvsd, size);
        }
    } else {
        initType(sizeof(DVINFO), size == palFrameSize ? &palInfo : &ntscInfo);
        majortype = MEDIATYPE_Interleaved;
        formattype = FORMAT_DvInfo;
        bFixedSizeSamples = TRUE;
    }
    subtype = MEDIASUBTYPE_dvsd;
    lSampleSize = size;
}

void dvMediaType::initAudioType(int samplesPerSec, int channels, int bitsPerSample) {
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = static_cast<WORD>(channels);
    format.nSamplesPerSec = static_cast<DWORD>(samplesPerSec);
    format.nBlockAlign = static_cast<WORD>(1ll * channels * bitsPerSample / 8);
    format.nAvgBytesPerSec = format.nBlockAlign * format.nSamplesPerSec;
    format.wBitsPerSample = static_cast<WORD>(bitsPerSample);
    initType(sizeof(format), &format);
    majortype = MEDIATYPE_Audio;
    subtype = MEDIASUBTYPE_PCM;
    formattype = FORMAT_WaveFormatEx;
    bFixedSizeSamples = TRUE;
    lSampleSize = 1;
}

template <class Block>
Block* dvMediaType::blockOf(const GUID& kind) const {
    const bool present = pbFormat && cbFormat >= sizeof(Block) && formattype == kind;
    return present ? reinterpret_cast<Block*>(pbFormat) : nullptr;
}

tagVIDEOINFOHEADER* dvMediaType::videoInfo() const {
    return blockOf<VIDEOINFOHEADER>(FORMAT_VideoInfo);
}

tagVIDEOINFOHEADER2* dvMediaType::videoInfo2() const {
    return blockOf<VIDEOINFOHEADER2>(FORMAT_VideoInfo2);
}

tWAVEFORMATEX* dvMediaType::waveFormatEx() const {
    return blockOf<WAVEFORMATEX>(FORMAT_WaveFormatEx);
}

DVINFO* dvMediaType::dvInfo() const {
    return blockOf<DVINFO>(FORMAT_DvInfo);
}

tagBITMAPINFOHEADER* dvMediaType::bmiHeader() const {
    if (VIDEOINFOHEADER2* const info = videoInfo2()) {
        return &info->bmiHeader;
    }
    if (VIDEOINFOHEADER* const info = videoInfo()) {
        return &info->bmiHeader;
    }
    return nullptr;
}

bool dvMediaType::isVideo() const {
    return majortype == MEDIATYPE_Video || majortype == MEDIATYPE_Interleaved;
}

bool dvMediaType::isAudio() const {
    return majortype == MEDIATYPE_Audio;
}

long dvMediaType::width() const {
    if (dvInfo()) {
        return dvWidth;
    }
    const BITMAPINFOHEADER* const header = bmiHeader();
    return header ? header->biWidth : 0;
}

long dvMediaType::height() const {
    if (const DVINFO* const info = dvInfo()) {
        return isPal(*info) ? 576 : 488;
    }
    const BITMAPINFOHEADER* const header = bmiHeader();
    return header ? header->biHeight : 0;
}

long dvMediaType::bpp() const {
    const BITMAPINFOHEADER* const header = bmiHeader();
    return header ? header->biBitCount : 0;
}

unsigned long dvMediaType::frameSize() const {
    if (const DVINFO* const info = dvInfo()) {
        return isPal(*info) ? palFrameSize : ntscFrameSize;
    }
    const BITMAPINFOHEADER* const header = bmiHeader();
    return header ? header->biSizeImage : 0;
}

long long dvMediaType::timePerFrame() const {
    if (const DVINFO* const info = dvInfo()) {
        return isPal(*info) ? palTimePerFrame : ntscTimePerFrame;
    }
    if (const VIDEOINFOHEADER* const info = videoInfo()) {
        return info->AvgTimePerFrame;
    }
    if (const VIDEOINFOHEADER2* const info = videoInfo2()) {
        return info->AvgTimePerFrame;
    }
    return 0;
}

void dvMediaType::setTimePerFrame(long long time) {
    if (VIDEOINFOHEADER* const info = videoInfo()) {
        info->AvgTimePerFrame = time;
    } else if (VIDEOINFOHEADER2* const info2 = videoInfo2()) {
        info2->AvgTimePerFrame = time;
    }
}

} // namespace vvideo
