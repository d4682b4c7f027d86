/// @file
/// The reader of the engine's own recordings.
#pragma once

#include "marvo/recording/kinds.h"
#include "marvo/recording/plain_reader.h"
#include "marvo/recording/play_file.h"

namespace recording {

/// The frames of a raw recording, by way of `dvPlayFile`.
class RawReader final : public PlainReader {
public:
    /// As `KindRow::open`.
    static std::unique_ptr<Reader> open(const wchar_t* name, const OpenOptions& options, std::wstring& error);

    /// Whether a file or a part of it that starts so is a record: the size of a DV frame, the time, and the
    /// start of such a frame.
    static bool isRecordStart(const unsigned char* head, std::size_t bytes);

    Kind kind() const override { return Kind::raw; }
    unsigned long long frames() const override { return file_.frameCount(); }
    void refresh() override { file_.refresh(); }
    unsigned long frameSize() const override { return file_.frameSize(); }
    unsigned long bufferBytes() const override { return file_.bufferSize(); }
    void describe(vvideo::dvMediaType& type) const override { type = file_.type(); }
    bool read(unsigned long long frame, RecordBuffer& buffer) override;
    std::wstring error() const override;
    unsigned long systemError() const override { return systemError_; }
    std::vector<Fact> facts() const override;
    unsigned long long check(const FaultCall& fault, const ProgressCall& progress,
                             unsigned long mostFaults) const override;
    void abandon() override { file_.close(); }

protected:
    unsigned long partBytes() const override { return file_.bufferSize(); }
    unsigned long bytesInFront() const override { return headerBytes; }

private:
    explicit RawReader(const wchar_t* name) : PlainReader(name) {}

    unsigned long findSector() const;
    RecordHeader header(unsigned long long frame) const;
    bool isOurs(const RecordHeader& header) const;

    dvPlayFile file_;
    unsigned long systemError_ = ERROR_SUCCESS;
};

} // namespace recording
