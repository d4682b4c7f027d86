// Recordings that are read and written, frame by frame.
#include "marvo/core/disk_file.h"
#include "marvo/core/handle.h"
#include "marvo/core/text.h"
#include "marvo/flat/file_trouble.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/handles.h"
#include "marvo/flat/open_recording.h"
#include "marvo/flat/structure.h"
#include "marvo/flat/text.h"
#include "marvo/recording/kinds.h"

#include <cstring>

using namespace flat;

namespace {

struct OpenReader {
    explicit OpenReader(std::wstring name) : recording(std::move(name)) {}
    Lock lock;
    OpenRecording recording MARVO_GUARDED_BY(lock);
};

Handles<marvo_reader, OpenReader>& readers() {
    static Handles<marvo_reader, OpenReader> all(3, "reader");
    return all;
}

struct OpenWriter {
    std::wstring name;
    unsigned long frameBytes = 0;
    Lock lock;
    std::unique_ptr<recording::Writer> writer MARVO_GUARDED_BY(lock);
    recording::RecordBuffer buffer MARVO_GUARDED_BY(lock);
    marvo_u64 frames MARVO_GUARDED_BY(lock) = 0;
};

Handles<marvo_writer, OpenWriter>& writers() {
    static Handles<marvo_writer, OpenWriter> all(4, "writer");
    return all;
}

[[noreturn]] void failWriting(const std::wstring& name, const std::wstring& reason) {
    fail(MARVO_E_FILE, quoted(name) + " cannot be written: " + utf8(reason) + ".");
}

const recording::KindRow& rowOf(int kind, const std::wstring& name) {
    switch (kind) {
    case MARVO_KIND_BY_NAME:
        return recording::rowOfName(name.c_str());
    case MARVO_KIND_RAW:
        return recording::rowOf(recording::Kind::raw);
    case MARVO_KIND_AVI:
        return recording::rowOf(recording::Kind::avi);
    case MARVO_KIND_STREAM:
        return recording::rowOf(recording::Kind::stream);
    default:
        fail(MARVO_E_ARGUMENT, vcore::format("There is no kind of recording number %d.", kind));
    }
}

/// Takes the name for a file that is not there yet, so that nobody else's is overwritten.
void claimName(const std::wstring& name) {
    if (vcore::namesDevice(name.c_str())) {
        failWriting(name, L"it is the name of a device, not of a file");
    }
    const vcore::handle file(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    if (!file) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) {
            fail(MARVO_E_EXISTS, quoted(name) + " exists; say MARVO_REPLACE to replace it.");
        }
        failWriting(name, vcore::systemMessage(error));
    }
}

} // namespace

int MARVO_CALL marvo_reader_open(const char* file, marvo_reader** reader) {
    return guarded([&] {
        if (!reader) {
            fail(MARVO_E_ARGUMENT, "There is no place for the reader: it is null.");
        }
        *reader = readers().add(std::make_shared<OpenReader>(wideText(file, "file name")));
    });
}

int MARVO_CALL marvo_reader_info(marvo_reader* reader, marvo_recording_info* info) {
    return guarded([&] {
        const std::shared_ptr<OpenReader> object = readers().get(reader);
        Answer<marvo_recording_info> to(info, "recording information");
        const LockGuard guard(object->lock);
        object->recording.describe(*to);
        to.give();
    });
}

int MARVO_CALL marvo_reader_refresh(marvo_reader* reader) {
    return guarded([&] {
        const std::shared_ptr<OpenReader> object = readers().get(reader);
        const LockGuard guard(object->lock);
        object->recording.refresh();
    });
}

int MARVO_CALL marvo_reader_read(marvo_reader* reader, marvo_u64 number, void* buffer, marvo_u32 capacity,
                                 marvo_frame_info* info) {
    return guarded([&] {
        const std::shared_ptr<OpenReader> object = readers().get(reader);
        Answer<marvo_frame_info> to(info, "frame information", true);
        const LockGuard guard(object->lock);
        const vdv::FrameBytes frame = object->recording.read(number);
        describeFrame(frame, static_cast<unsigned long>(frame.size()), *to);
        to->number = number;
        to->source = MARVO_SOURCE_FILE;
        to.give();
        copyFrame(frame, buffer, capacity);
    });
}

int MARVO_CALL marvo_reader_close(marvo_reader* reader) {
    return guarded([&] { readers().remove(reader); });
}

int MARVO_CALL marvo_writer_create(const char* file, int kind, int system, marvo_u32 flags,
                                   marvo_writer** writer) {
    return guarded([&] {
        const std::wstring name = wideText(file, "file name");
        if (!writer) {
            fail(MARVO_E_ARGUMENT, "There is no place for the writer: it is null.");
        }
        if (system != MARVO_SYSTEM_625 && system != MARVO_SYSTEM_525) {
            fail(MARVO_E_ARGUMENT, vcore::format("There is no DV system number %d.", system));
        }
        const recording::KindRow& row = rowOf(kind, name);
        const vdv::System& video = system == MARVO_SYSTEM_625 ? vdv::system625 : vdv::system525;
        const bool claimed = (flags & MARVO_REPLACE) == 0;
        if (claimed) {
            claimName(name);
        }
        auto object = std::make_shared<OpenWriter>();
        const LockGuard guard(object->lock);
        std::wstring reason;
        object->name = name;
        object->frameBytes = video.frameBytes;
        object->writer = row.create(name.c_str(), video.frameBytes, video.timePerFrame_100ns, reason);
        if (!object->writer) {
            if (claimed) {
                DeleteFileW(name.c_str());
            }
            failWriting(name, reason);
        }
        if (!object->buffer.allocate(object->writer->bufferBytes())) {
            throw std::bad_alloc();
        }
        *writer = writers().add(object);
    });
}

int MARVO_CALL marvo_writer_add(marvo_writer* writer, const void* frame, marvo_u32 bytes) {
    return guarded([&] {
        const std::shared_ptr<OpenWriter> object = writers().get(writer);
        const vdv::FrameBytes all = needFrame(frame, bytes);
        if (bytes != object->frameBytes) {
            fail(MARVO_E_FORMAT,
                 quoted(object->name) +
                     vcore::format(" takes frames of %lu bytes, not of %u.", object->frameBytes, bytes));
        }
        const LockGuard guard(object->lock);
        if (!object->writer) {
            fail(MARVO_E_HANDLE, "This writer has just been finished.");
        }
        object->buffer.setFrameBytes(bytes);
        std::memcpy(object->buffer.frame(), all.data(), bytes);
        if (!object->writer->write(object->buffer)) {
            failWriting(object->name, object->writer->error());
        }
        ++object->frames;
    });
}

int MARVO_CALL marvo_writer_finish(marvo_writer* writer, marvo_u64* frames) {
    return guarded([&] {
        const std::shared_ptr<OpenWriter> object = writers().remove(writer);
        const LockGuard guard(object->lock);
        if (frames) {
            *frames = object->frames;
        }
        const std::unique_ptr<recording::Writer> ending = std::move(object->writer);
        if (!ending->finish()) {
            failWriting(object->name, ending->error());
        }
    });
}
