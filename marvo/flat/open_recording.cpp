#include "marvo/flat/open_recording.h"

#include "marvo/core/text.h"
#include "marvo/flat/failure.h"
#include "marvo/flat/file_trouble.h"
#include "marvo/flat/text.h"
#include "marvo/recording/kinds.h"

namespace flat {

namespace {

using recording::Reader;

marvo_end endOf(Reader::End::State state) {
    if (state == Reader::End::State::finished) {
        return MARVO_END_FINISHED;
    }
    return state == Reader::End::State::beingWritten ? MARVO_END_BEING_WRITTEN : MARVO_END_CUT_OFF;
}

} // namespace

marvo_kind kindOf(recording::Kind kind) {
    if (kind == recording::Kind::raw) {
        return MARVO_KIND_RAW;
    }
    return kind == recording::Kind::avi ? MARVO_KIND_AVI : MARVO_KIND_STREAM;
}

OpenRecording::OpenRecording(std::wstring name) : name_(std::move(name)), reader_(open(name_)) {}

std::unique_ptr<Reader> OpenRecording::open(const std::wstring& name) {
    std::wstring predicate;
    std::unique_ptr<Reader> reader = recording::openByContent(name.c_str(), predicate);
    if (!reader) {
        failOpening(name, predicate);
    }
    return reader;
}

/// Only the first frame tells what an empty file has become.
void OpenRecording::refresh() {
    if (reader_->frames() == 0) {
        reader_ = open(name_);
        return;
    }
    reader_->refresh();
}

vdv::FrameBytes OpenRecording::read(unsigned long long number) {
    if (number >= reader_->frames()) {
        fail(MARVO_E_RANGE,
             quoted(name_) + vcore::format(" has no frame %llu: there are %llu.", number, reader_->frames()));
    }
    if (buffer_.bytes() < reader_->bufferBytes() && !buffer_.allocate(reader_->bufferBytes())) {
        throw std::bad_alloc();
    }
    if (!reader_->read(number, buffer_)) {
        fail(MARVO_E_FILE, quoted(name_) + vcore::format(" cannot be read at frame %llu: ", number) +
                               utf8(reader_->error()) + ".");
    }
    return {buffer_.frame(), buffer_.frameBytes()};
}

void OpenRecording::describe(marvo_recording_info& info) const {
    const Reader::End end = reader_->end();
    const unsigned long bytes = reader_->frames() > 0 ? reader_->frameSize() : 0;
    const vdv::System* const system = vdv::systemOf(bytes);
    vvideo::dvMediaType type;
    reader_->describe(type);
    const bool ofItsOwn = reader_->kind() == recording::Kind::raw && type.timePerFrame() > 0;
    info.kind = kindOf(reader_->kind());
    info.frames = reader_->frames();
    info.file_bytes = reader_->fileBytes();
    info.frame_duration_100ns = ofItsOwn || !system ? type.timePerFrame() : system->timePerFrame_100ns;
    info.duration_100ns = info.frame_duration_100ns * static_cast<marvo_i64>(info.frames);
    info.frames_per_second = system ? system->rate : 0.0;
    info.frame_bytes = static_cast<marvo_u32>(bytes);
    info.system = systemOfBytes(bytes);
    info.end = endOf(end.state);
    putText(info.end_text, sizeof info.end_text, asUtf8(end.text));
}

} // namespace flat
