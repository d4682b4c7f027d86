#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <numeric>

using vvideo::dvFrame;

namespace {

std::vector<unsigned char> numbered(size_t size) {
    std::vector<unsigned char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

vcore::daytime moment(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, int ms) {
    vcore::daytime t;
    t.fields() = {year, month, 0, day, hour, minute, second, static_cast<WORD>(ms)};
    t.updateFileTime();
    return t;
}

unsigned char* block(dvFrame& frame, int sequence, int number) {
    return frame.data() + sequence * 12000 + number * 80;
}

} // namespace

TEST(Frame, KeepsItsBufferUnlessTheSizeChanges) {
    const auto bytes = numbered(100);
    dvFrame frame(100, bytes.data()), copy;
    EXPECT_EQ(frame.id(), vvideo::noFrame);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frame.data()) % 4096, 0u);
    EXPECT_TRUE(frame.init(100));
    EXPECT_EQ(frame.data()[99], 100);
    frame.setId(7);
    frame.access() = 3;
    copy = frame;
    EXPECT_TRUE(frame.init(200) && frame.size() == 200);
    EXPECT_TRUE(copy.size() == 100 && copy.data()[99] == 100 && copy.id() == 7 && copy.access() == 3);
    EXPECT_FALSE(frame.init(0)) << "no buffer is left";
    EXPECT_TRUE(frame.init(0)) << "the size was right";
    EXPECT_FALSE(frame.init(0xFFFFF000)) << "no such memory";
    EXPECT_EQ(frame.size(), 0u);
    dvFrame* volatile none = nullptr;
    EXPECT_FALSE(none->init(5));
}

TEST(Frame, CopiesNoFurtherThanEitherBuffer) {
    const auto bytes = numbered(64);
    dvFrame frame(64, bytes.data()), smaller(16), empty;
    fake::Sample longer(80), shorter(32), none;
    EXPECT_TRUE(frame.copyTo(&longer) && frame.copyTo(&shorter) && frame.copyTo(&smaller));
    EXPECT_TRUE(longer.buffer[63] == 64 && longer.buffer[64] == 0 && longer.length == 80);
    EXPECT_TRUE(shorter.buffer[31] == 32 && smaller.data()[15] == 16);
    longer.length = 1;
    longer.buffer.assign(80, 9);
    EXPECT_TRUE(frame.copyFrom(&longer));
    EXPECT_EQ(frame.data()[63], 9) << "the frame's size counts, not the data length";
    EXPECT_TRUE(frame.copyFrom(&shorter));
    EXPECT_TRUE(frame.data()[31] == 32 && frame.data()[32] == 9);

    EXPECT_FALSE(frame.copyFrom(&none) || frame.copyTo(&none) || empty.copyFrom(&longer) ||
                 empty.copyTo(&longer) || frame.copyFrom(nullptr) || frame.copyTo(&empty) ||
                 empty.copyTo(&frame) || frame.copyTo(static_cast<dvFrame*>(nullptr)) ||
                 frame.copyTo(static_cast<IMediaSample*>(nullptr)));
}

TEST(Frame, CopiesASampleWithItsTimesAndFlags) {
    fake::Sample from(50), to(40), none;
    from.buffer = numbered(50);
    from.length = 30;
    from.time = {{1, 2}};
    from.preroll = TRUE;
    to.mediaTime = {{3, 4}};
    to.sync = to.discontinuity = TRUE;
    EXPECT_TRUE(dvFrame::copy(&to, &from));
    EXPECT_TRUE(to.buffer[29] == 30 && to.buffer[30] == 0);
    EXPECT_TRUE(to.time == from.time && !to.mediaTime && !to.sync && !to.discontinuity && to.preroll);
    from.length = to.length = 1000;
    EXPECT_TRUE(dvFrame::copy(&to, &from)) << "lengths that lie";
    EXPECT_EQ(to.buffer[39], 40);
    EXPECT_FALSE(dvFrame::copy(&to, &none) || dvFrame::copy(&none, &from) || dvFrame::copy(nullptr, &from));
}

TEST(Frame, PaintsValidGray) {
    for (const unsigned long size : {144000ul, 120000ul}) {
        dvFrame frame(size);
        EXPECT_TRUE(frame.fillGray());
        const int types[] = {0x1F, 0x3F, 0x3F, 0x5F, 0x5F, 0x5F, 0x7F, 0x9F};
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(block(frame, 3, i)[0], types[i]) << i;
        }
        unsigned long audio = 0;
        for (unsigned long at = 0; at < size; at += 80) {
            audio += frame.data()[at] == 0x7F;
        }
        EXPECT_EQ(audio, 9 * size / 12000);
        const unsigned char* const last = block(frame, 9, 149);
        EXPECT_TRUE(last[1] == 0x97 && last[2] == 0 && last[78] == 0 && last[79] == 6);
        EXPECT_EQ(block(frame, 9, 6)[2], 0xFF);
    }
}

TEST(Frame, ReadsTheFirstAudioSamples) {
    dvFrame frame(144000);
    frame.fillGray();
    for (const auto& [at, value] : {std::pair{488, 0x1234}, {60488, 0x8000}, {72488, 0xFFFE}}) {
        frame.data()[at] = static_cast<unsigned char>(value >> 8);
        frame.data()[at + 1] = static_cast<unsigned char>(value);
    }
    EXPECT_EQ(frame.getAudioLeft(), 0x1234);
    EXPECT_EQ(frame.getAudioRight(), -2);
    frame.data()[3] = 0x7F;
    EXPECT_EQ(frame.getAudioRight(), -32768) << "the second half of a 525-line frame";
}

TEST(Frame, CarriesDateAndTimeToTheFrame) {
    for (const auto& [size, ms, expected] :
         {std::tuple{144000, 999, 960}, {144000, 40, 40}, {120000, 999, 966}, {120000, 40, 33}}) {
        dvFrame frame(size);
        frame.fillGray();
        frame.setDate(moment(2019, 12, 31, 23, 59, 58, ms));
        vcore::daytime read(0, false);
        EXPECT_TRUE(frame.getDate(read));
        EXPECT_EQ(read.count(), moment(2019, 12, 31, 23, 59, 58, expected).count()) << size << " " << ms;
    }
}

TEST(Frame, WritesBothSubcodeBlocksOfTheSecondHalf) {
    dvFrame frame(120000);
    frame.fillGray();
    frame.setDate(moment(2007, 3, 5, 14, 2, 9, 500));
    const unsigned char expected[2][16] = {
        {0x75, 0x34, 0xFF, 0x62, 0xFF, 0xC5, 0xE3, 0x07, 0x70, 0x05, 0xFF, 0x63, 0xD5, 0x89, 0x82, 0xD4},
        {0x75, 0x3A, 0xFF, 0x62, 0xFF, 0xC5, 0xE3, 0x07, 0x00, 0x0B, 0xFF, 0x63, 0xD5, 0x89, 0x82, 0xD4}};
    for (int number : {1, 2}) {
        EXPECT_EQ(memcmp(block(frame, 5, number) + 35, expected[number - 1], 16), 0) << number;
        EXPECT_EQ(block(frame, 4, number)[38], 0xFF) << "the first half stays";
    }
}

TEST(Frame, RefusesInvalidPacksButStoresTheYear) {
    dvFrame frame(144000);
    frame.fillGray();
    frame.setDate(moment(2012, 6, 15, 10, 20, 30, 0));
    block(frame, 6, 1)[40] = 0xC0;
    vcore::daytime read = moment(2001, 1, 2, 3, 4, 5, 0);
    EXPECT_FALSE(frame.getDate(read)) << "day 0 in the first date pack; later ones are ignored";
    EXPECT_TRUE(read.fields().wYear == 2012 && read.fields().wDay == 2 && read.fields().wHour == 10);
    block(frame, 6, 1)[40] = 0xD5;
    block(frame, 6, 1)[48] = 0xFF;
    EXPECT_TRUE(frame.getDate(read)) << "the time comes from the next sequence";
    EXPECT_EQ(read.fields().wSecond, 30);
}

TEST(Frame, StaysWithinSmallBuffers) {
    for (const unsigned long size : {0ul, 1ul, 4ul, 489ul, 12000ul, 72159ul, 119999ul}) {
        dvFrame frame(size);
        EXPECT_EQ(frame.fillGray(), size > 0);
        vcore::daytime t(0, false);
        frame.setDate(t);
        EXPECT_FALSE(size < 72160 && frame.getDate(t)) << size;
        EXPECT_EQ(frame.getAudioLeft(), size < 490 ? 0 : -1) << size;
        EXPECT_EQ(frame.getAudioRight(), size < 72490 ? 0 : -1) << size;
    }
}
