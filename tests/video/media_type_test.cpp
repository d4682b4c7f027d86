#include "marvo/video/media_type.h"

#include <gtest/gtest.h>

#include <vector>

using vvideo::dvMediaType;

namespace {

constexpr unsigned long defaultTime = 0xFFFFFFFF;

/// Width, height, bits of a pixel, bytes of a frame, time of a frame, bit rate.
using Described = std::vector<long long>;

Described describe(const dvMediaType& type) {
    return {type.width(),     type.height(),       type.bpp(),
            type.frameSize(), type.timePerFrame(), type.videoInfo() ? type.videoInfo()->dwBitRate : 0};
}

dvMediaType dvVideo(unsigned long size, unsigned long time) {
    dvMediaType type;
    type.initVideoType(size, time);
    return type;
}

dvMediaType dv(unsigned long size, bool video) {
    dvMediaType type;
    type.initDVType(size, video);
    return type;
}

dvMediaType picture(unsigned long width, unsigned long height, int bits, int time) {
    dvMediaType type;
    type.initVideoType(width, height, bits, time);
    return type;
}

} // namespace

TEST(MediaType, DescribesVideo) {
    const GUID &dvsd = MEDIASUBTYPE_dvsd, &rgb32 = MEDIASUBTYPE_RGB32;
    const struct {
        dvMediaType type;
        GUID subtype;
        unsigned long sampleSize;
        Described expected;
    } cases[] = {
        {dvVideo(120000, defaultTime), dvsd, 1, {720, 480, 24, 120000, 333333, 28800028}},
        {dvVideo(144000, defaultTime), dvsd, 1, {720, 576, 24, 144000, 400000, 28800000}},
        {dvVideo(120001, defaultTime), dvsd, 1, {720, 576, 24, 120001, 400000, 24000200}},
        {dvVideo(144000, 200000), dvsd, 1, {720, 576, 24, 144000, 200000, 57600000}},
        {dvVideo(120000, 0), dvsd, 1, {720, 480, 24, 120000, 0, 0}},
        {dv(120000, true), dvsd, 120000, {720, 486, 24, 120000, 333333, 28800000}},
        {dv(120001, true), dvsd, 120001, {720, 576, 24, 120001, 400000, 28800000}},
        {dv(144000, true), dvsd, 144000, {720, 576, 24, 144000, 400000, 28800000}},
        {dv(120000, false), dvsd, 120000, {720, 488, 0, 120000, 333333, 0}},
        {dv(120001, false), dvsd, 120001, {720, 488, 0, 120000, 333333, 0}},
        {dv(144000, false), dvsd, 144000, {720, 576, 0, 144000, 400000, 0}},
        {picture(720, 576, 24, -1), MEDIASUBTYPE_RGB24, 1244160, {720, 576, 24, 1244160, 400000, 248832000}},
        {picture(720, 486, 32, -1), rgb32, 1399680, {720, 486, 32, 1399680, 333333, 335923535}},
        {picture(720, 487, -1, -1), MEDIASUBTYPE_YUY2, 0, {720, 487, 0xFFFF, 0, 400000, 0}},
        {picture(720, 480, -2, 100), MEDIASUBTYPE_UYVY, 0, {720, 480, 0xFFFE, 0, 100, 0}},
        {picture(8, 8, 16, 0), rgb32, 128, {8, 8, 16, 128, 0, 0}},
        {picture(65536, 65537, 32, 0), rgb32, 0, {65536, 65537, 32, 0, 0, 0}}, // not the wrapped size
    };
    for (const auto& [type, subtype, sampleSize, expected] : cases) {
        EXPECT_EQ(describe(type), expected) << sampleSize << ' ' << expected[1];
        EXPECT_TRUE(type.isVideo() && type->subtype == subtype && type->lSampleSize == sampleSize);
    }
}

TEST(MediaType, DescribesPcmAudio) {
    dvMediaType type;
    type.initAudioType(48000, 2, 16);
    ASSERT_NE(type.waveFormatEx(), nullptr);
    EXPECT_EQ(type.waveFormatEx()->nAvgBytesPerSec, 192000u);
    EXPECT_TRUE(type.isAudio() && !type.isVideo());
}

TEST(MediaType, ReadsOnlyWholeBlocks) {
    VIDEOINFOHEADER2 block{};
    block.bmiHeader.biHeight = 99;
    dvMediaType type;
    type.initType(sizeof(block), &block);
    type->formattype = FORMAT_VideoInfo2;
    type.setTimePerFrame(1ll << 40);
    EXPECT_EQ(describe(type), (Described{0, 99, 0, 0, 1ll << 40, 0}));
    type->cbFormat = sizeof(block) - 1;
    EXPECT_EQ(describe(type), Described(6));
}

TEST(MediaType, CopiesNeverShareABlock) {
    dvMediaType source = dv(144000, false), copy(source), assigned = dv(120000, true);
    assigned = source;
    assigned = assigned;
    copy.dvInfo()->dwDVAAuxSrc = 0;
    EXPECT_TRUE(source.height() == 576 && assigned.height() == 576 && copy.height() == 488);
    vvideo::copyMediaType(copy, nullptr);
    EXPECT_EQ(copy.height(), 488) << "null leaves it as it is";
    copy = static_cast<const AM_MEDIA_TYPE*>(nullptr);
    EXPECT_EQ(copy->pbFormat, nullptr);
    AM_MEDIA_TYPE damaged{};
    damaged.cbFormat = 88;
    EXPECT_EQ(dvMediaType(&damaged)->cbFormat, 0u) << "a length without a block";
}

// A foreign filter frees what it is given with COM's allocator.
TEST(MediaType, BlocksComeFromTheHeapOfComsAllocator) {
    AM_MEDIA_TYPE mt;
    vvideo::initMediaType(mt, 64);
    EXPECT_EQ(std::vector<BYTE>(mt.pbFormat, mt.pbFormat + 64), std::vector<BYTE>(64, 0));
    CoTaskMemFree(mt.pbFormat);
    mt.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(88));
    vvideo::clearMediaType(mt);
    EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr));
}
