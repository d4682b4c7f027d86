#include "marvo.h"

#include "tests/support/avi_builder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr wchar_t name[] = L"avi_inspector_test.avi";
using avi::Index;
using avi::Shape;

/// Inspects `bytes`; the faults' texts, one behind the other.
std::string inspect(const std::string& bytes, AviInspector& inspector,
                    const AviInspector::Options& options = {}) {
    avi::File::write(name, bytes);
    EXPECT_TRUE(inspector.run(name, options));
    std::string texts;
    for (const auto& fault : inspector.faults()) {
        texts += std::to_string(fault.offset) + ": " + vcore::str(fault.text).getStr() + "\n";
    }
    return texts;
}

TEST(AviInspector, FindsNothingWrongWithSoundFiles) {
    for (const Index index :
         {Index::Relative, Index::Absolute, Index::Standard, Index::StandardAndRelative}) {
        for (const bool busy : {false, true}) {
            Shape sound{.index = index, .pieces = index >= Index::Standard ? 3ul : 1ul, .starts = true};
            sound.audioBytes = busy ? 7681 : 0;
            sound.audioFirst = sound.recLists = busy;
            AviInspector inspector;
            const avi::File built(sound);
            EXPECT_EQ(inspect(built.bytes, inspector), "") << static_cast<int>(index);
            EXPECT_EQ(inspector.frames(), 6u);
            ASSERT_EQ(inspector.pieces().size(), sound.pieces);
            const AviInspector::Piece& last = inspector.pieces().back();
            EXPECT_EQ(last.offset + last.size, built.bytes.size());
            EXPECT_EQ(last.frames, 6u / sound.pieces);
            EXPECT_EQ(last.indexes, index >= Index::Standard ? 1u : 0u);
            EXPECT_EQ(inspector.pieces()[0].legacyEntries != 0, index != Index::Standard);
        }
    }
    AviInspector inspector;
    EXPECT_EQ(inspect(avi::File({.frames = 0}).bytes, inspector), "") << "nothing was recorded";
}

TEST(AviInspector, SaysWhatIsWrongAndWhere) {
    const avi::File one({.starts = true});
    const avi::File pieces({.index = Index::Standard, .pieces = 3, .starts = true});
    const size_t frame3 = one.frameOffsets[3];
    const size_t idx1 = one.find("idx1");
    const size_t movi = one.find("movi");
    const size_t super = pieces.find("indx");
    const size_t ix = pieces.find("ix00", 0, super + 100);
    const size_t avix = pieces.find("AVIX");
    const struct {
        const avi::File& built;
        size_t offset;
        std::uint32_t value;
        const char* says;
        unsigned long frames;
    } cases[] = {
        {one, 8, riff::fourcc("WAVE"), "Not a RIFF chunk.", 0},
        {one, 4, 1000, "lie behind the end of the piece", 6},
        {one, 4, 0x7FFFFFFF, "the list 'AVI ' lacks its last", 6},
        {one, movi - 4, 500000, "goes beyond the list that it is in", 6},
        {one, one.find("avih", 24), 7, "'avih' says 7 frames, 6 are there", 6},
        {one, one.find("strh", 40), 5, "'strh' says 5 frames, 6 are there", 6},
        {one, frame3 + 4, 119992, "bytes are no chunks", 6},
        {one, frame3 + 4, 0xFFFFFFFF, "bytes are no chunks", 5},
        {one, frame3, riff::fourcc("JUNK"), "entry 3 of the index fits no frame", 5},
        {one, frame3 + 8 + 12000 * 7, 0, "frame 3: DIF sequence 7 does not begin as it should", 6},
        {one, idx1 + 8 + 16 + 8, 0, "entry 1 of the index fits no frame", 6},
        {one, idx1 + 8 + 5 * 16 + 12, 4, "entry 5 of the index fits no frame", 6},
        {one, idx1, riff::fourcc("JUNK"), "'idx1' is missing, although the header announces it", 6},
        {pieces, super, riff::fourcc("JUNK"), "the file has 3 pieces, but no super index", 6},
        {pieces, super + 8, 0x01000004, "cannot read the super index entry.", 6},
        {pieces, super + 12, 2, "the super index names 2 of 3 standard indexes", 6},
        {pieces, super + 32, 12, "no ix chunk found in movi LIST: entry 0 of the super index leads to 12", 6},
        {pieces, super + 48, 12, "entry 1 of the super index leads back", 6},
        {pieces, super + 40, 7, "entry 0 of the super index has the wrong size", 6},
        {pieces, super + 44, 7, "the standard index has 2 entries, the super index says 7", 6},
        {pieces, ix + 8, 2, "Tried to get the info for a standard index, but the data is for a super", 6},
        {pieces, ix + 12, 1, "the standard indexes cover 5 of 6 frames", 6},
        {pieces, ix + 32, 7, "entry 0 of the standard index fits no frame", 6},
        {pieces, avix, riff::fourcc("AVI "), "Not a RIFF chunk. Its form is 'AVI '", 6},
        {pieces, 4, 0x7FFFFFFF, "a piece begins within the one before it, whose size is wrong", 6},
    };
    for (const auto& c : cases) {
        avi::File changed = c.built;
        changed.set(c.offset, c.value);
        AviInspector inspector;
        const std::string texts = inspect(changed.bytes, inspector);
        EXPECT_NE(texts.find(c.says), std::string::npos) << "not said: " << c.says << "\n" << texts;
        EXPECT_EQ(inspector.frames(), c.frames) << c.says;
        EXPECT_TRUE(std::is_sorted(inspector.faults().begin(), inspector.faults().end(),
                                   [](const auto& a, const auto& b) { return a.offset < b.offset; }));
    }
}

TEST(AviInspector, LooksAtCutAndForeignFiles) {
    AviInspector inspector;
    const avi::File built({.starts = true});
    const std::string cut = inspect(built.bytes.substr(0, built.frameOffsets[4] + 50000), inspector);
    EXPECT_NE(cut.find(std::to_string(built.frameOffsets[4]) + ": End of file reached."), std::string::npos)
        << cut;
    EXPECT_EQ(inspector.frames(), 4u);
    EXPECT_NE(inspect(built.bytes + "12345", inspector).find("5 bytes too many"), std::string::npos);
    EXPECT_NE(inspect("", inspector), "");
    const avi::File odd({.audioBytes = 7681, .padded = false, .starts = true});
    EXPECT_NE(inspect(odd.bytes, inspector).find("odd size and no padding"), std::string::npos);
    EXPECT_EQ(inspector.frames(), 6u);
    const avi::File small({.frameSize = 5000, .index = Index::None});
    EXPECT_NE(inspect(small.bytes, inspector).find("frame 5 has 5000 bytes, not 120000"), std::string::npos);
    EXPECT_FALSE(inspector.run(L"no such file.avi", {}));
    EXPECT_EQ(inspector.faults().size(), 1u);
    EXPECT_FALSE(inspector.run(nullptr, {}));
}

TEST(AviInspector, KeepsToItsOptions) {
    const std::string bytes = avi::File({.frames = 100}).bytes;
    AviInspector inspector;
    inspect(bytes, inspector, {.maxFaults = 7, .progress = {}});
    EXPECT_TRUE(inspector.faults().size() == 7 && inspector.faultCount() == 100);
    EXPECT_EQ(inspect(bytes, inspector, {.frames = false, .progress = {}}), "");
    inspect(bytes, inspector, {.progress = [](auto, auto) { return false; }});
    EXPECT_LT(inspector.frames(), 100u) << "ended early";
}

} // namespace
