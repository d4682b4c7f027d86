/// @file
/// The reader of AVI recordings.
#pragma once

#include "marvo/avi/file_io_avi.h"
#include "marvo/recording/kinds.h"

#include <atomic>

namespace recording {

/// The DV video stream of an AVI file, of this engine or another writer, by way of `FileIOAVI`.
class AviFileReader final : public Reader {
public:
    /// As `KindRow::open`.
    static std::unique_ptr<Reader> open(const wchar_t* name, const OpenOptions& options, std::wstring& error);
    /// Finds the frames without relying on headers and indexes; as `KindRow::find`.
    static bool find(const wchar_t* name, FoundFrames& found, const ProgressCall& progress);

    /// Whether an AVI file starts so.
    static bool isAviStart(const unsigned char* head, std::size_t bytes);
    /// Whether this is the chunk header of a frame.
    static bool isFrameHeader(const unsigned char* head, std::size_t bytes);

    Kind kind() const override { return Kind::avi; }
    unsigned long long frames() const override { return avi_.frames(); }
    void refresh() override { avi_.refresh(); }
    unsigned long frameSize() const override { return avi_.dataFrameSize(); }
    unsigned long bufferBytes() const override { return avi_.slotSize(); }
    bool place(unsigned long long frame, Place& place) const override;
    bool read(unsigned long long frame, RecordBuffer& buffer) override;
    std::wstring error() const override;
    unsigned long systemError() const override;
    std::vector<Fact> facts() const override;
    unsigned long long check(const FaultCall& fault, const ProgressCall& progress,
                             unsigned long mostFaults) const override;
    void abandon() override { abandoned_ = true; }

protected:
    std::string whatIsMissing() const override;

private:
    explicit AviFileReader(const wchar_t* name) : Reader(name) {}

    FileIOAVI avi_;
    std::atomic<bool> abandoned_ = false;
};

} // namespace recording
