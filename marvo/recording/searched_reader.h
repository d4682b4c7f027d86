/// @file
/// Frames that are searched for.
#pragma once

#include "marvo/dv/layout.h"
#include "marvo/recording/kinds.h"

#include <optional>

namespace recording {

/// The undamaged frames of a damaged file. Where its kind has a way of its own to find them, that is taken;
/// where that finds nothing, and in all other files, a frame is whatever looks like one, at any byte.
class SearchedReader final : public Reader {
public:
    /// By what the frames lost in a hole were counted.
    enum class Counted {
        records,  ///< the hole is a whole number of the file's records (or frames of a stream): exact
        timeCode, ///< the camera counted so many from the frame in front of the hole to the one behind it
        header,   ///< the file's header promises so many more than there are
        room      ///< nothing tells; there was room for so many, or so many begin: at least
    };

    /// A place where frames are missing.
    struct Hole {
        unsigned long frame;       ///< number of the next frame found behind it
        unsigned long long offset; ///< where it begins
        unsigned long lost;        ///< frames that were there, at least 1
        Counted counted;           ///< by what
        unsigned long damaged;     ///< those of them that begin as such
    };

    /// Searches the file, whose kind is told by its first bytes, else by its extension, else by what stands
    /// in front of its first frame. `progress` may throw. Null, with the reason in `error`, when the file
    /// cannot be opened.
    static std::unique_ptr<SearchedReader> open(const wchar_t* name, const ProgressCall& progress,
                                                std::wstring& error);

    Kind kind() const override { return row_->kind; }
    unsigned long long frames() const override { return places_.size(); }
    void refresh() override {}
    unsigned long frameSize() const override { return frameSize_; }
    unsigned long bufferBytes() const override { return headerBytes + frameSize_; }
    bool place(unsigned long long frame, Place& place) const override;
    bool read(unsigned long long frame, RecordBuffer& buffer) override;
    std::wstring error() const override { return error_; }
    unsigned long long check(const FaultCall&, const ProgressCall&, unsigned long) const override {
        return 0;
    }
    void abandon() override {}

    /// Where frames are missing, in the order of the file. Frames that are damaged, cut off, or of another
    /// system than the first are left out and missing.
    std::vector<Hole> holes() const;

protected:
    std::string whatIsMissing() const override { return {}; }

private:
    explicit SearchedReader(const wchar_t* name) : Reader(name) {}

    void takeFound(const FoundFrames& found, const ProgressCall& progress);
    void searchBytes(const ProgressCall& progress);
    bool take(unsigned long long offset, vdv::FrameBytes frame);
    const KindRow& guessRow() const;
    unsigned long long usualStep() const;
    std::size_t brokenBetween(unsigned long long begin, unsigned long long end) const;
    std::optional<unsigned long> countedBetween(std::size_t before, std::size_t after) const;
    Hole holeBefore(std::size_t frame, unsigned long long begin, unsigned long long usual) const;

    const KindRow* row_ = nullptr;
    std::vector<unsigned long long> places_;
    unsigned long frameSize_ = 0;
    std::vector<unsigned long long> broken_; ///< where frames begin that are left out
    unsigned long long promised_ = 0;
    const wchar_t* error_ = L"";
};

} // namespace recording
