#include "tests/mutation/changing_file.h"
#include "tests/mutation/guarded_buffer.h"
#include "tests/mutation/mutator.h"
#include "tests/mutation/watched_run.h"
#include "tests/support/avi_builder.h"

namespace {

using avi::Index;

constexpr unsigned filesPerKind = 3000;
constexpr unsigned long frames = 4;

/// What the search behind damage takes for the start of a frame.
void beginAsDv(char* frame) {
    std::memcpy(frame, "\x1F\x07\x00", 3);
}

std::string foreign(avi::Shape shape) {
    shape.frames = frames;
    avi::File file(shape);
    for (const size_t offset : file.frameOffsets) {
        beginAsDv(&file.bytes[offset + 8]);
    }
    return file.bytes;
}

/// As the engine writes; with `closed` false as it stands on disk when the engine dies.
std::string own(bool unbuffered, bool closed) {
    const wchar_t* name = unbuffered ? L"own_unbuffered.avi" : L"own.avi";
    FileIOAVI file;
    EXPECT_EQ(FileIOAVI::Ok, file.create(name, {.height = 480, .is625 = false}, unbuffered));
    std::vector<char> slot(file.slotSize());
    for (unsigned long k = 0; k < frames; ++k) {
        std::memcpy(&slot[8], samples::bytes(k, samples::ntscSize).data(), samples::ntscSize);
        beginAsDv(&slot[8]);
        EXPECT_EQ(FileIOAVI::Ok, file.writeFrame(slot.data(), file.slotSize(), samples::ntscSize));
    }
    if (closed) {
        file.close();
    }
    const std::string bytes = avi::File::read(name);
    EXPECT_GT(bytes.size(), frames * samples::ntscSize);
    file.close();
    DeleteFileW(name);
    return bytes;
}

struct Kind {
    const char* name;
    std::string (*make)();
};

const Kind kinds[] = {
    {"own", [] { return own(true, true); }},
    {"own_cut_off", [] { return own(true, false); }},
    {"own_buffered", [] { return own(false, true); }},
    {"legacy_index", [] { return foreign({.index = Index::Relative}); }},
    {"sound_in_lists",
     [] { return foreign({.index = Index::Absolute, .audioBytes = 1001, .recLists = true}); }},
    {"sound_first_pieces",
     [] { return foreign({.index = Index::Standard, .pieces = 3, .audioBytes = 800, .audioFirst = true}); }},
    {"drops", [] { return foreign({.index = Index::StandardAndRelative, .tag = "db", .drops = true}); }},
    {"no_index", [] { return foreign({.index = Index::None}); }},
};

/// Where headers, indexes and the first bytes of frames stand in a sound file.
std::vector<size_t> spotsOf(const std::string& bytes) {
    constexpr size_t mostOfChunk = 320;
    std::vector<size_t> spots;
    for (size_t at = 0; at + 12 <= bytes.size();) {
        std::uint32_t size = 0;
        std::memcpy(&size, &bytes[at + 4], sizeof(size));
        const std::string id = bytes.substr(at, 4);
        const bool list = id == "RIFF" || id == "LIST";
        const bool media =
            id.substr(2) == "dc" || id.substr(2) == "db" || id.substr(2) == "wb" || id == "JUNK";
        const size_t told = list ? 4 : std::min<size_t>(media ? 4 : mostOfChunk, size);
        for (size_t k = 0; k < 8 + told && at + k + 8 <= bytes.size(); k += 4) {
            spots.push_back(at + k);
        }
        at += list ? 12 : 8 + size + size % 2;
    }
    return spots;
}

Mutator mutator(const Kind& kind) {
    std::string bytes = kind.make();
    std::vector<size_t> spots = spotsOf(bytes);
    return {std::move(bytes), std::move(spots)};
}

class AviMutation : public testing::TestWithParam<size_t> {
protected:
    /// Reads frames here and there; what is read must be what stands in the file.
    void readFrames(FileIOAVI& file, std::mt19937& random) {
        const unsigned long count = file.frames();
        ASSERT_LE(count, bytes_.size() / 8);
        ASSERT_LE(file.slotSize(), caller_.size());
        for (const unsigned long frame :
             {0ul, count / 2, count - 1, count, static_cast<unsigned long>(random())}) {
            file.seekFrame(frame);
            FileIOAVI::FramePosition position;
            ASSERT_EQ(frame < count, file.framePosition(frame, position));
            ASSERT_EQ(count == 0 ? 0 : frame % count, file.frame());
            const unsigned long slot = file.slotSize();
            const int code = file.readFrame(caller_.last(slot), slot, frame);
            const unsigned long whole = 8 + position.size;
            ASSERT_LE(position.offset + whole, frame < count ? bytes_.size() : 8);
            if (code == FileIOAVI::Ok) {
                ASSERT_EQ(
                    0, std::memcmp(caller_.last(slot), &bytes_[static_cast<size_t>(position.offset)], whole));
            }
            for (const unsigned long tooSmall : {0ul, 7ul, whole - 1}) {
                ASSERT_EQ(frame < count ? FileIOAVI::Refused : FileIOAVI::ReadFailed,
                          file.readFrame(caller_.last(tooSmall), tooSmall, frame));
            }
        }
    }

    void inspect(bool frameData) {
        AviInspector inspector;
        inspector.run(file_.name(), {.frames = frameData, .maxFaults = 10, .progress = {}});
        ASSERT_LE(inspector.faults().size(), 11u);
        ASSERT_GE(inspector.faultCount(), inspector.faults().size());
    }

    void check(const Mutator& base, const Mutator& other, std::mt19937& random, unsigned number) {
        base.mutate(bytes_, random, other);
        const bool grows = number % 4 == 0 && !bytes_.empty();
        file_.put(std::string_view(bytes_).substr(0, grows ? random() % bytes_.size() : bytes_.size()));
        FileIOAVI file;
        const auto trust = number % 8 == 1 ? FileIOAVI::Trust::Nothing : FileIOAVI::Trust::Indexes;
        const bool opened = file.open(file_.name(), trust) == FileIOAVI::Ok;
        opened_ += opened;
        if (grows) {
            file_.put(bytes_);
            file.refresh();
        }
        if (opened) {
            readFrames(file, random);
        }
        if (number % 4 == 2) {
            inspect(number % 8 == 2);
        }
    }

    std::string bytes_;
    ChangingFile file_{(L"mutated_" + std::to_wstring(GetParam()) + L".avi").c_str()};
    GuardedBuffer caller_{0x400000};
    unsigned opened_ = 0;
};

TEST_P(AviMutation, is_read_without_a_fault) {
    const Kind& kind = kinds[GetParam()];
    const Mutator base = mutator(kind);
    const Mutator other = mutator(kinds[(GetParam() + 3) % std::size(kinds)]);
    WatchedRun(kind.name, static_cast<unsigned>(GetParam()))
        .run(filesPerKind,
             [&](std::mt19937& random, unsigned number) { check(base, other, random, number); });
    // Damage that no file survives would test the first check only.
    EXPECT_GT(opened_, std::getenv("MARVO_MUTATION") ? 0 : filesPerKind / 4);
}

INSTANTIATE_TEST_SUITE_P(Kinds, AviMutation, testing::Range<size_t>(0, std::size(kinds)),
                         [](const auto& info) { return kinds[info.param].name; });

} // namespace
