/// @file
/// Where the frames of a file stand.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

/// Where the frames of a file stand, in the order of the file. Frames of one size at equal distances are kept
/// as one run: a recording of this engine takes a few bytes per thousand frames, and where the distances
/// differ, as between frames with sound, two frames still share a run of 24 bytes.
class AviIndex {
public:
    /// Forgets all frames.
    void clear() {
        runs_.clear();
        count_ = 0;
        largest_ = 0;
    }

    /// Appends a frame whose chunk begins at `offset`, behind that of the last one, and has `size` bytes of
    /// data.
    void add(unsigned long long offset, std::uint32_t size) {
        if (!runs_.empty() && runs_.back().size == size) {
            Run& run = runs_.back();
            const unsigned long long distance = offset - run.offset;
            if (count_ - run.first == 1 && distance <= 0xFFFFFFFFu) {
                run.stride = static_cast<std::uint32_t>(distance);
            }
            if (distance == static_cast<unsigned long long>(run.stride) * (count_ - run.first)) {
                ++count_;
                return;
            }
        }
        addRun(offset, size, 0, 1);
    }

    /// Appends `count` frames of `size` bytes, each `stride` bytes behind the one before.
    void addRun(unsigned long long offset, std::uint32_t size, std::uint32_t stride, std::uint32_t count) {
        runs_.push_back({offset, count_, stride, size});
        count_ += count;
        largest_ = std::max(largest_, size);
    }

    /// The frame whose chunk begins at `offset`; `count` when there is none.
    unsigned long find(unsigned long long offset) const {
        const auto before = [](unsigned long long place, const Run& run) { return place < run.offset; };
        const auto behind = std::upper_bound(runs_.begin(), runs_.end(), offset, before);
        if (behind == runs_.begin()) {
            return count();
        }
        const Run& run = *(behind - 1);
        const std::uint32_t end = behind == runs_.end() ? count_ : behind->first;
        const unsigned long long distance = offset - run.offset;
        if (distance == 0) {
            return run.first;
        }
        const bool fits =
            run.stride != 0 && distance % run.stride == 0 && distance / run.stride < end - run.first;
        return fits ? static_cast<unsigned long>(run.first + distance / run.stride) : count();
    }

    /// Number of frames.
    unsigned long count() const { return count_; }
    /// Bytes from the start of the file to the chunk header of frame `frame`, which is below `count`.
    unsigned long long offset(unsigned long frame) const {
        const Run& run = runOf(frame);
        return run.offset + static_cast<unsigned long long>(run.stride) * (frame - run.first);
    }
    /// Bytes of data of frame `frame`, which is below `count`.
    std::uint32_t size(unsigned long frame) const { return runOf(frame).size; }
    /// Bytes of data of the largest frame; 0 without any.
    std::uint32_t largest() const { return largest_; }

private:
    struct Run {
        std::uint64_t offset;
        std::uint32_t first; ///< number of its first frame
        std::uint32_t stride;
        std::uint32_t size;
    };

    const Run& runOf(unsigned long frame) const {
        const auto before = [](unsigned long number, const Run& run) { return number < run.first; };
        return *(std::upper_bound(runs_.begin(), runs_.end(), frame, before) - 1);
    }

    std::vector<Run> runs_;
    std::uint32_t count_ = 0;
    std::uint32_t largest_ = 0;
};
