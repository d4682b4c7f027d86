#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

/// Where the frames of a file stand, in the order of the file; 12 bytes of memory for each.
class AviIndex {
public:
    /// Forgets all frames.
    void clear() {
        offsets_.clear();
        sizes_.clear();
        largest_ = 0;
    }

    /// Makes room for `frames` frames.
    void reserve(unsigned long frames) {
        offsets_.reserve(frames);
        sizes_.reserve(frames);
    }

    /// Appends a frame whose chunk begins at `offset` and has `size` bytes of data.
    void add(unsigned long long offset, std::uint32_t size) {
        offsets_.push_back(offset);
        sizes_.push_back(size);
        largest_ = std::max(largest_, size);
    }

    /// The frame whose chunk begins at `offset`; `count` when there is none. The frames must have been added in the
    /// order of the file.
    unsigned long find(unsigned long long offset) const {
        const auto at = std::lower_bound(offsets_.begin(), offsets_.end(), offset);
        const bool found = at != offsets_.end() && *at == offset;
        return found ? static_cast<unsigned long>(at - offsets_.begin()) : count();
    }

    /// Number of frames.
    unsigned long count() const { return static_cast<unsigned long>(offsets_.size()); }
    /// Bytes from the start of the file to the chunk header of frame `frame`, which is below `count`.
    unsigned long long offset(unsigned long frame) const { return offsets_[frame]; }
    /// Bytes of data of frame `frame`, which is below `count`.
    std::uint32_t size(unsigned long frame) const { return sizes_[frame]; }
    /// Bytes of data of the largest frame; 0 without any.
    std::uint32_t largest() const { return largest_; }

private:
    std::vector<std::uint64_t> offsets_;
    std::vector<std::uint32_t> sizes_;
    std::uint32_t largest_ = 0;
};
