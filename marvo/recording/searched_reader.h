/// @file
/// Frames that are searched for.
#pragma once

#include "marvo/dv/layout.h"
#include "marvo/recording/kinds.h"

namespace recording {

/// The undamaged frames of a damaged file. Where its kind has a way of its own to find them, that is taken;
/// where that finds nothing, and in all other files, a frame is whatever looks like one, at any byte.
class SearchedReader final : public Reader {
public:
    /// A run of bytes between frames in which there was room for at least one more.
    struct Hole {
        unsigned long frame;       ///< number of the next frame found behind it
        unsigned long long offset; ///< where it begins
        unsigned long lost;        ///< frames for which there was room, about
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

    /// Frames that begin as such and are damaged, cut off, or of another system than the first; they are left
    /// out.
    unsigned long damaged() const { return damaged_; }
    /// Frames that the file's headers promise; 0 when they do not.
    unsigned long long promised() const { return promised_; }
    /// Where frames are missing.
    std::vector<Hole> holes() const;

protected:
    std::string whatIsMissing() const override { return {}; }

private:
    explicit SearchedReader(const wchar_t* name) : Reader(name) {}

    void takeFound(const FoundFrames& found, const ProgressCall& progress);
    void searchBytes(const ProgressCall& progress);
    bool take(unsigned long long offset, vdv::FrameBytes frame);
    const KindRow& guessRow() const;

    const KindRow* row_ = nullptr;
    std::vector<unsigned long long> places_;
    unsigned long frameSize_ = 0;
    unsigned long damaged_ = 0;
    unsigned long long promised_ = 0;
    const wchar_t* error_ = L"";
};

} // namespace recording
