#include "marvo.h"

#include "marvo/avi/avi_sound_reader.h"
#include "marvo/dv/dv_system.h"
#include "marvo/recording/sound_track.h"
#include "tests/support/avi_builder.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/// A frame whose sound blocks are there, with the source pack in each, and samples of 0x0101.
std::vector<unsigned char> frameWithSound(unsigned long size, unsigned char audioSize, unsigned char rate) {
    std::vector<unsigned char> frame(size, 1);
    for (size_t block = 0; block < size / 80; ++block) {
        const size_t inSequence = block % 150;
        if (inSequence >= 6 && inSequence % 16 == 6) {
            const unsigned char start[] = {0x7F, 0, 0, 0x50, audioSize, 0, 0xC0, rate};
            std::copy(std::begin(start), std::end(start), frame.begin() + static_cast<long>(block * 80));
        }
    }
    return frame;
}

TEST(Sound, LostSamplesAreBridged) {
    dvSound sound;
    std::vector<unsigned char> frame = frameWithSound(144000, 24, 0xC0);
    ASSERT_TRUE(sound.decode(frame.data(), 144000));
    EXPECT_EQ(std::make_tuple(sound.rate(), sound.channels(), sound.bits(), sound.samples(), sound.locked()),
              std::make_tuple(48000ul, 2u, 16u, 1920ul, true));
    EXPECT_EQ(sound.concealed(), 0u);
    // Samples 0, 54, ... of the left channel: one marked as lost, those of the next block overwritten.
    frame[6 * 80 + 8] = 0x80;
    frame[6 * 80 + 9] = 0;
    frame[(6 + 16) * 80] = 0xFF;
    ASSERT_TRUE(sound.decode(frame.data(), 144000));
    EXPECT_EQ(sound.concealed(), 1u + 36u);
    EXPECT_EQ(std::count(sound.data(), sound.data() + 2 * 1920, 0x0101), 2 * 1920) << "a line between equals";
    // The right channel says that it is none.
    for (size_t at = 72000 + 6 * 80; at < frame.size(); at += 80) {
        frame[at + 5] = frame[at + 3] == 0x50 ? 0x0F : frame[at + 5];
    }
    ASSERT_TRUE(sound.decode(frame.data(), 144000));
    EXPECT_EQ(sound.channels(), 1u);
    for (const unsigned char quantization : {0xC2, 0xD8}) {
        frame = frameWithSound(144000, 24, quantization);
        EXPECT_FALSE(sound.decode(frame.data(), 144000)) << "20 bits, or a rate that there is not";
        EXPECT_STREQ(sound.explanation(), L"holds sound of a kind that is not read");
    }
    EXPECT_FALSE(sound.decode(frame.data(), 143999));
    EXPECT_TRUE(sound.samples() == 0 && sound.channels() == 0);
}

TEST(Sound, WildFramesAreHarmless) {
    std::mt19937 random(1);
    dvSound sound;
    unsigned long read = 0;
    for (const unsigned long size : {120000ul, 144000ul, 240000ul, 576000ul}) {
        for (unsigned value = 0; value < 256; ++value) {
            const unsigned place = value % 4;
            std::vector<unsigned char> frame = frameWithSound(size, 20, 0xC0 | (value % 3) << 3);
            for (size_t at = 6 * 80; at + 80 <= size; at += 80) {
                if (frame[at + 3] == 0x50) {
                    frame[at + 4 + place] = static_cast<unsigned char>(value % 5 ? value : random());
                    frame[at] = random() % 4 == 0 ? static_cast<unsigned char>(random()) : frame[at];
                }
            }
            if (sound.decode(frame.data(), size)) {
                ++read;
                ASSERT_TRUE(sound.samples() <= dvSound::mostSamples && sound.channels() >= 1 &&
                            sound.channels() <= dvSound::mostChannels);
            }
        }
    }
    EXPECT_GT(read, 200u);
}

TEST(SoundTrack, KeepsStepForAnHour) {
    struct Case {
        bool is625;
        double samples; ///< that the camera brings in a frame, on average
        bool changes;   ///< whether any of them has to be put in or taken out
    };
    // A camera 100 millionths too fast, one locked to its picture, and one that is far too slow.
    for (const Case& c : {Case{true, 1920.19, true}, {false, 1601.6, false}, {true, 1896, true}}) {
        SCOPED_TRACE(c.samples);
        const double perFrame = c.is625 ? 48000 / 25.0 : 48000 / 29.97;
        recording::SoundTrack track(48000, 2, c.is625 ? 2500 : 2997, 100);
        const std::vector<short> samples(2 * 1944, 77);
        double brought = 0;
        double written = 0;
        double furthest = 0;
        unsigned long changed = 0;
        for (unsigned long frame = 0; frame < 3600 * (c.is625 ? 25 : 30); ++frame) {
            const auto count =
                static_cast<unsigned long>(brought + c.samples) - static_cast<unsigned long>(brought);
            brought += c.samples;
            // For a second the camera is silent.
            const bool silent = c.changes && frame >= 5000 && frame < 5025;
            const recording::SoundTrack::Piece piece{samples.data(), count, 2, 48000};
            const std::span<const short> made = track.next(silent ? nullptr : &piece);
            ASSERT_EQ(made.size() % 2, 0u);
            ASSERT_TRUE(made.empty() || (made.front() == (silent ? 0 : 77) && made.back() == made.front()));
            written += static_cast<double>(made.size() / 2);
            changed += !silent && made.size() / 2 != count;
            furthest = std::max(furthest, std::abs(written - (frame + 1) * perFrame));
        }
        EXPECT_LE(furthest, perFrame / 2 + 2) << "half a frame";
        EXPECT_EQ(changed > 0, c.changes);
    }
}

TEST(SoundTrack, TakesOtherRatesAndChannels) {
    recording::SoundTrack track(48000, 2, 2500, 100);
    std::vector<short> ramp(4 * 1280);
    for (size_t i = 0; i < ramp.size(); ++i) {
        ramp[i] = static_cast<short>(i % 4 == 0 ? 3 * (i / 4) : i % 4);
    }
    recording::SoundTrack::Piece piece{ramp.data(), 1280, 4, 32000};
    std::span<const short> made = track.next(&piece);
    ASSERT_EQ(made.size(), 2u * 1920);
    for (size_t i = 0; i < 1917; ++i) {
        ASSERT_TRUE(made[2 * i] == static_cast<short>(2 * i) && made[2 * i + 1] == 1) << i;
    }
    piece.channels = 1;
    piece.samples = 1;
    made = track.next(&piece);
    EXPECT_GE(made.size(), 2u * 960) << "half a frame behind, and no further";
    EXPECT_EQ(made[0], made[1]);
    EXPECT_EQ(track.next(nullptr).size() / 2 + made.size() / 2, 2u * 1920);
}

TEST(AviSound, IsFoundByIndexesAndByWalking) {
    constexpr wchar_t name[] = L"sound_test.avi";
    using avi::Index;
    for (const Index index : {Index::None, Index::Relative, Index::Absolute, Index::StandardAndRelative}) {
        for (const bool drops : {false, true}) {
            avi::Shape shape{.index = index, .audioBytes = 267, .recLists = drops, .drops = drops};
            shape.audioFirst = index == Index::Absolute;
            const avi::File file(shape);
            file.save(name);
            AviSoundReader reader;
            ASSERT_EQ(reader.open(name, shape.frames), AviSoundReader::Stream::readable);
            EXPECT_EQ(reader.format().rate, 8000u);
            std::string read;
            for (unsigned long frame = 0; frame < shape.frames; ++frame) {
                const std::vector<unsigned char>& bytes = reader.read(frame);
                // 8000 / 29.97 samples; with an empty chunk behind every frame they lie twice as far apart.
                const unsigned long from = (frame * (drops ? 2 : 1) * 8008 + 15) / 30;
                for (size_t i = 0; i < bytes.size() && from + i < 6 * 267 + 4; ++i) {
                    ASSERT_EQ(bytes[i], avi::soundByte(from + i)) << frame << ' ' << i;
                }
                EXPECT_TRUE(bytes.size() == 267 || bytes.size() == 266);
            }
            EXPECT_EQ(reader.read(1000).front(), 0x80) << "silence behind the end";
        }
    }
    std::mt19937 random(2);
    const avi::File file({.index = Index::Relative, .audioBytes = 267});
    for (int i = 0; i < 400; ++i) {
        avi::File wild = file;
        const size_t headers = file.frameOffsets[0];
        const size_t end = file.bytes.size();
        for (int k = 0; k < 4; ++k) {
            wild.bytes[i % 2 ? random() % headers : end - 1 - random() % 200] = static_cast<char>(random());
        }
        wild.save(name);
        AviSoundReader reader;
        if (reader.open(name, 6) == AviSoundReader::Stream::readable) {
            EXPECT_LT(reader.read(3).size(), 0x200000u);
        }
    }
    DeleteFileW(name);
}

} // namespace
