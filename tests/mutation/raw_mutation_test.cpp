#include "tests/mutation/changing_file.h"
#include "tests/mutation/guarded_buffer.h"
#include "tests/mutation/mutator.h"
#include "tests/mutation/watched_run.h"
#include "tests/support/recording.h"

namespace {

constexpr unsigned files = 4000;
constexpr unsigned long frameSize = samples::ntscSize;

/// A raw recording of three frames in records for sectors of 4096 bytes.
Mutator recordingToDamage() {
    constexpr size_t record = 122880;
    std::string bytes;
    std::vector<size_t> spots;
    for (std::uint32_t k = 0; k < 3; ++k) {
        const std::uint32_t header[] = {frameSize, 333667};
        const auto frame = samples::bytes(k, frameSize);
        spots.insert(spots.end(), {bytes.size(), bytes.size() + 4});
        bytes.append(reinterpret_cast<const char*>(header), sizeof(header));
        bytes.append(frame.begin(), frame.end());
        bytes.resize((k + 1) * record);
    }
    return {bytes, spots};
}

void readRecords(dvPlayFile& file, GuardedBuffer& caller, std::mt19937& random) {
    const long long count = file.frameCount();
    for (const long long frame : {0ll, count - 1, count, -1ll, static_cast<long long>(random()) << 8}) {
        file.seekFrame(frame);
        if (file.readFrame()) {
            static_cast<void>(static_cast<const volatile unsigned char*>(file.data())[file.bufferSize() - 1]);
        }
        for (const unsigned long size : {0ul, 1ul, file.frameSize(), file.bufferSize(), 0xFFFFFFFFul}) {
            file.seekFrame(frame);
            unsigned long got = ~0ul;
            const unsigned long room =
                std::min<unsigned long>(size, static_cast<unsigned long>(caller.size()));
            if (file.read(caller.last(room), size, &got)) {
                ASSERT_EQ(size, got);
                ASSERT_LE(size, file.bufferSize() - dvFile::headerSize);
            }
        }
    }
}

TEST(RawMutation, is_read_without_a_fault) {
    const Mutator base = recordingToDamage();
    ChangingFile changing(L"mutated.dv");
    GuardedBuffer caller(dvFile::maxFrameSize + 0x10000);
    std::string bytes;
    unsigned long long read = 0;
    WatchedRun("raw", 1).run(files, [&](std::mt19937& random, unsigned) {
        base.mutate(bytes, random, base);
        changing.put(bytes);
        const unsigned long sizes[] = {0, 0, 0, frameSize, 0xFFFFFFFF, static_cast<unsigned long>(random())};
        dvPlayFile file;
        if (file.open(changing.name(), sizes[random() % std::size(sizes)])) {
            ASSERT_LE(file.frameCount() * static_cast<unsigned long long>(file.bufferSize()), bytes.size());
            read += file.frameCount();
            readRecords(file, caller, random);
        }
    });
    EXPECT_GT(read, std::getenv("MARVO_MUTATION") ? 0 : files / 2);
}

} // namespace
