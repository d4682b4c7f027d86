#include "marvo/recording/recording.h"

#include "marvo/core/guarded.h"
#include "marvo/core/text.h"
#include "marvo/dv/layout.h"
#include "marvo/recording/kinds.h"
#include "marvo/recording/recordings.h"

#include <algorithm>
#include <cstring>
#include <vector>

static_assert(dvRecording::mostFrameBytes == vdv::maxFrameBytes);
static_assert(dvFrameNotes::headBytes == vdv::frameHeadBytes);

namespace {

using recording::Reader;

std::wstring sentence(const std::wstring& name, const std::wstring& predicate) {
    return L"'" + name + L"' " + predicate + L".";
}

} // namespace

struct dvRecording::Work {
    std::unique_ptr<Reader> reader;
    recording::RecordBuffer buffer;
    std::wstring explanation;

    bool fail(const std::wstring& predicate) {
        explanation = sentence(reader->name(), predicate);
        return false;
    }

    bool open(const std::wstring& name) {
        std::wstring predicate = L"is the name of no file";
        std::unique_ptr<Reader> opened =
            name.empty() ? nullptr : recording::openByContent(name.c_str(), predicate);
        reader = std::move(opened);
        explanation = reader ? std::wstring() : sentence(name, predicate);
        return reader != nullptr;
    }

    bool refresh() {
        explanation.clear();
        if (reader->frames() > 0) {
            reader->refresh();
            return true;
        }
        // Only the first frame tells what an empty file has become.
        const std::wstring name = reader->name();
        std::wstring predicate;
        std::unique_ptr<Reader> opened = recording::openByContent(name.c_str(), predicate);
        if (!opened) {
            return fail(predicate);
        }
        reader = std::move(opened);
        return true;
    }

    bool read(unsigned long long frame, void* to, unsigned long capacity, unsigned long& bytes) {
        explanation.clear();
        if (frame >= reader->frames()) {
            return fail(L"has no frame " + std::to_wstring(frame) + L": there are " +
                        std::to_wstring(reader->frames()));
        }
        if (buffer.bytes() < reader->bufferBytes() && !buffer.allocate(reader->bufferBytes())) {
            return fail(L"cannot be read: there is no memory for a frame");
        }
        if (!reader->read(frame, buffer)) {
            return fail(L"cannot be read at frame " + std::to_wstring(frame) + L": " + reader->error());
        }
        if (!to || capacity < buffer.frameBytes()) {
            return fail(L"has at frame " + std::to_wstring(frame) + L" more bytes than the buffer: " +
                        std::to_wstring(buffer.frameBytes()));
        }
        std::memcpy(to, buffer.frame(), buffer.frameBytes());
        bytes = buffer.frameBytes();
        return true;
    }

    /// What `note` finds in the start of a frame, or else in all of it.
    template <class Notes, class Note, class Known>
    Notes notes(unsigned long long frame, Note note, Known known) const {
        unsigned char head[dvFrameNotes::headBytes];
        Notes found = note(head, reader->readHead(frame, head, sizeof head));
        if (known(found)) {
            return found;
        }
        std::vector<unsigned char> whole(reader->frameSize());
        return note(whole.data(), reader->readHead(frame, whole.data(), whole.size()));
    }
};

dvRecording::dvRecording() = default;
dvRecording::~dvRecording() = default;

bool dvRecording::open(const wchar_t* name) {
    return vcore::guarded(false, [&] {
        if (!work_) {
            work_ = std::make_unique<Work>();
        }
        return work_->open(name ? std::wstring(name) : std::wstring());
    });
}

void dvRecording::close() {
    work_.reset();
}

bool dvRecording::opened() const {
    return work_ && work_->reader;
}

const wchar_t* dvRecording::name() const {
    return opened() ? work_->reader->name().c_str() : L"";
}

const wchar_t* dvRecording::explanation() const {
    return work_ ? work_->explanation.c_str() : L"";
}

dvRecording::Kind dvRecording::kind() const {
    if (!opened()) {
        return Kind::none;
    }
    switch (work_->reader->kind()) {
    case recording::Kind::raw:
        return Kind::raw;
    case recording::Kind::avi:
        return Kind::avi;
    case recording::Kind::stream:
        break;
    }
    return Kind::stream;
}

unsigned long long dvRecording::frames() const {
    return opened() ? work_->reader->frames() : 0;
}

bool dvRecording::refresh() {
    return opened() && vcore::guarded(false, [&] { return work_->refresh(); });
}

bool dvRecording::beingWritten() const {
    return opened() && vcore::guarded(false, [&] { return recording::InputFile::isBeingWritten(name()); });
}

unsigned long dvRecording::frameBytes() const {
    return frames() > 0 ? work_->reader->frameSize() : 0;
}

long long dvRecording::frameDuration_100ns() const {
    return vcore::guarded(0ll, [&]() -> long long {
        if (!opened()) {
            return 0;
        }
        vvideo::dvMediaType type;
        work_->reader->describe(type);
        const vdv::System* const system = vdv::systemOf(work_->reader->frameSize());
        const bool ofItsOwn = kind() == Kind::raw && type.timePerFrame() > 0;
        return ofItsOwn || !system ? type.timePerFrame() : system->timePerFrame_100ns;
    });
}

bool dvRecording::read(unsigned long long frame, void* buffer, unsigned long capacity, unsigned long* bytes) {
    unsigned long got = 0;
    const bool done =
        opened() && vcore::guarded(false, [&] { return work_->read(frame, buffer, capacity, got); });
    if (bytes) {
        *bytes = got;
    }
    return done;
}

dvTimeCode dvRecording::timeCode(unsigned long long frame) const {
    return vcore::guarded(dvTimeCode(), [&] {
        return opened() ? work_->notes<dvTimeCode>(frame, dvFrameNotes::timeCode,
                                                   [](const dvTimeCode& code) { return code.known; })
                        : dvTimeCode();
    });
}

dvClockTime dvRecording::recordedAt(unsigned long long frame) const {
    return vcore::guarded(dvClockTime(), [&] {
        return opened() ? work_->notes<dvClockTime>(
                              frame, dvFrameNotes::recordedAt,
                              [](const dvClockTime& time) { return time.dateKnown && time.timeKnown; })
                        : dvClockTime();
    });
}

dvAspect dvRecording::aspect(unsigned long long frame) const {
    return vcore::guarded(dvAspect(), [&] {
        return opened() ? work_->notes<dvAspect>(frame, dvFrameNotes::aspect,
                                                 [](const dvAspect& aspect) { return aspect.known; })
                        : dvAspect();
    });
}

dvFields dvRecording::fields(unsigned long long frame) const {
    return vcore::guarded(dvFields(), [&] {
        return opened() ? work_->notes<dvFields>(frame, dvFrameNotes::fields,
                                                 [](const dvFields& fields) { return fields.known; })
                        : dvFields();
    });
}
