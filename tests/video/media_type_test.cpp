#include "video/media_type.h"

#include <gtest/gtest.h>

#include <vector>

using vvideo::dvMediaType;

namespace {

constexpr unsigned long defaultTime = 0xFFFFFFFF;

struct Described {
    long width, height, bpp;
    unsigned long frameSize;
    long long timePerFrame;
    bool operator==(const Described&) const = default;
};

Described describe(const dvMediaType& type) {
    return {type.width(), type.height(), type.bpp(), type.frameSize(), type.timePerFrame()};
}

} // namespace

TEST(MediaType, DescribesDvAsVideoBySizeAndTime) {
    struct {
        unsigned long size, time;
        Described expected;
        DWORD bitRate;
    } const cases[] = {
        {120000, defaultTime, {720, 480, 24, 120000, 333333}, 28800028},
        {144000, defaultTime, {720, 576, 24, 144000, 400000}, 28800000},
        {120001, defaultTime, {720, 576, 24, 120001, 400000}, 24000200},
        {144000, 200000, {720, 576, 24, 144000, 200000}, 57600000},
        {120000, 0, {720, 480, 24, 120000, 0}, 0},
    };
    for (const auto& c : cases) {
        dvMediaType type;
        type.initVideoType(c.size, c.time);
        EXPECT_EQ(describe(type), c.expected) << c.size;
        EXPECT_EQ(type.videoInfo()->dwBitRate, c.bitRate) << c.size;
        EXPECT_EQ(type.videoInfo()->rcTarget.bottom, c.expected.height);
        EXPECT_TRUE(type->lSampleSize == 1 && type->cbFormat == 88);
        EXPECT_TRUE(type->subtype == MEDIASUBTYPE_dvsd && type.isVideo());
        EXPECT_EQ(type.bmiHeader()->biCompression, MAKEFOURCC('d', 'v', 's', 'd'));
    }
}

TEST(MediaType, DescribesDvInBothForms) {
    const DWORD pal[8] = {0xD1E030D0, 0xFFA0CF3F, 0xD1E03FD0, 0xFFA0CF3F, 0xFF20FFFF, 0xFFFDC83F};
    const DWORD ntsc[8] = {0xD1C030CF, 0xFFA0CF3F, 0xD1C03FCF, 0xFFA0CF3F, 0xFF00FFFF, 0xFFFCC83F};
    struct {
        unsigned long size;
        const DWORD* packs; // null: as video
        Described expected;
    } const cases[] = {
        {120000, nullptr, {720, 486, 24, 120000, 333333}}, {120001, nullptr, {720, 576, 24, 120001, 400000}},
        {144000, nullptr, {720, 576, 24, 144000, 400000}}, {120000, ntsc, {720, 488, 0, 120000, 333333}},
        {120001, ntsc, {720, 488, 0, 120000, 333333}},     {144000, pal, {720, 576, 0, 144000, 400000}},
    };
    for (const auto& c : cases) {
        dvMediaType type;
        type.initDVType(c.size, !c.packs);
        EXPECT_EQ(describe(type), c.expected) << c.size;
        EXPECT_EQ(type->lSampleSize, c.size);
        EXPECT_TRUE(type.isVideo());
        EXPECT_EQ(type->majortype == MEDIATYPE_Interleaved, c.packs != nullptr);
        EXPECT_EQ(type.bmiHeader() == nullptr, c.packs != nullptr);
        EXPECT_TRUE(c.packs ? memcmp(type.dvInfo(), c.packs, 32) == 0
                            : type.videoInfo()->dwBitRate == 28800000);
    }
}

TEST(MediaType, DescribesUncompressedVideo) {
    struct {
        unsigned long width, height;
        int bits, time;
        GUID subtype;
        unsigned long size;
        long long expectedTime;
        DWORD bitRate;
    } const cases[] = {
        {720, 576, 24, -1, MEDIASUBTYPE_RGB24, 1244160, 400000, 248832000},
        {720, 486, 32, -1, MEDIASUBTYPE_RGB32, 1399680, 333333, 335923535},
        {720, 487, -1, -1, MEDIASUBTYPE_YUY2, 0, 400000, 0},
        {720, 480, -2, 100, MEDIASUBTYPE_UYVY, 0, 100, 0},
        {8, 8, 16, 0, MEDIASUBTYPE_RGB32, 128, 0, 0},
    };
    for (const auto& c : cases) {
        dvMediaType type;
        type.initVideoType(c.width, c.height, c.bits, c.time);
        EXPECT_TRUE(type->subtype == c.subtype && type->lSampleSize == c.size && type->cbFormat == 88)
            << c.bits;
        EXPECT_EQ(type.timePerFrame(), c.expectedTime) << c.bits;
        EXPECT_EQ(type.videoInfo()->dwBitRate, c.bitRate) << c.bits;
        EXPECT_EQ(type.bpp(), c.bits & 0xFFFF);
    }
}

TEST(MediaType, DescribesPcmAudio) {
    dvMediaType type;
    type.initAudioType(48000, 2, 16);
    ASSERT_NE(type.waveFormatEx(), nullptr);
    EXPECT_EQ(type.waveFormatEx()->nBlockAlign, 4);
    EXPECT_EQ(type.waveFormatEx()->nAvgBytesPerSec, 192000u);
    EXPECT_TRUE(type.isAudio() && !type.isVideo());
    EXPECT_EQ(describe(type), (Described{0, 0, 0, 0, 0}));
}

TEST(MediaType, ReadsOnlyWholeBlocks) {
    VIDEOINFOHEADER2 block{};
    block.bmiHeader.biHeight = 99;
    dvMediaType type;
    type.initType(sizeof(block), &block);
    type->formattype = FORMAT_VideoInfo2;
    type.setTimePerFrame(1ll << 40);
    EXPECT_EQ(describe(type), (Described{0, 99, 0, 0, 1ll << 40}));
    type->cbFormat = sizeof(block) - 1;
    EXPECT_EQ(describe(type), (Described{0, 0, 0, 0, 0}));
}

TEST(MediaType, CopiesNeverShareABlock) {
    dvMediaType source;
    source.initDVType(144000, false);
    dvMediaType copy(source), assigned;
    assigned.initDVType(120000, true);
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
