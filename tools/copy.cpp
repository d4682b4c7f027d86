#include "tools/copy.h"

#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/read_ahead.h"
#include "tools/standard_streams.h"
#include "tools/text.h"

#include <algorithm>

namespace dvrec {

namespace {

Failure cannotRead(const recording::Reader& from, unsigned long long frame, const std::string& fault) {
    return {ExitStatus::cannotRead, "Frame " + std::to_string(frame) + " of " + quoted(from.name()) + " " +
                                        fault + ". 'dvrec repair' saves the others."};
}

unsigned long sizeOf(const recording::Reader& from, unsigned long long frame) {
    recording::Reader::Place place;
    from.place(frame, place);
    return place.size;
}

unsigned long long writtenBytes(const std::wstring& name) {
    recording::InputFile file;
    file.open(name.c_str());
    return file.size();
}

} // namespace

Written copyFrames(recording::Reader& from, unsigned long long first, unsigned long long last,
                   recording::Kind kind, const Arguments& arguments) {
    if (from.frames() == 0) {
        throw Failure{ExitStatus::cannotRead, quoted(from.name()) + " holds no whole frame."};
    }
    if (first > last || last >= from.frames()) {
        throw Failure{ExitStatus::usage,
                      format("There is no range from frame %llu to %llu: the last frame is %llu.", first,
                             last, from.frames() - 1)};
    }
    OutputFile output(arguments.files[1], arguments.force, from.name());
    const unsigned long size = sizeOf(from, first);
    Written written{kind, last - first + 1, 0};
    {
        const vdv::System* const system = vdv::systemOf(size);
        const long time_100ns = (system ? *system : vdv::system625).timePerFrame_100ns;
        std::wstring error;
        const std::unique_ptr<recording::Writer> writer =
            isPipe(output.name())
                ? std::make_unique<PipeWriter>()
                : rowOf(kind).create(output.temporaryName().c_str(), size, time_100ns, error);
        if (!writer) {
            throw cannotWrite(output.name(), utf8(error));
        }
        const auto check = [&](bool good) {
            if (!good) {
                throw cannotWrite(output.name(), utf8(writer->error()));
            }
        };
        Progress progress("writing " + quoted(output.name()), arguments.progress);
        ReadAhead frames(from, first, last, std::max(from.bufferBytes(), writer->bufferBytes()));
        for (unsigned long long frame = first; frame <= last; ++frame) {
            std::string fault;
            recording::RecordBuffer* const buffer = frames.next(fault);
            if (!buffer) {
                throw cannotRead(from, frame, fault);
            }
            if (buffer->frameBytes() != size) {
                throw cannotRead(
                    from, frame,
                    format("has %lu bytes and those before have %lu, which do not go into one file",
                           buffer->frameBytes(), size));
            }
            check(writer->write(*buffer));
            progress.update((frame - first + 1) * size, written.frames * size);
        }
        check(writer->flush() && writer->finish());
    }
    written.bytes = isPipe(output.name()) ? written.frames * size : writtenBytes(output.temporaryName());
    output.publish();
    return written;
}

Written copyAll(recording::Reader& from, recording::Kind kind, const Arguments& arguments) {
    return copyFrames(from, 0, from.frames() > 0 ? from.frames() - 1 : 0, kind, arguments);
}

std::string describe(const Written& written, const Arguments& arguments) {
    return quoted(arguments.files[1]) + ": " + describe(written.kind) + ", " +
           counted(written.frames, "frame") + ", " + counted(written.bytes, "byte");
}

} // namespace dvrec
