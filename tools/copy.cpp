#include "tools/copy.h"

#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/sink.h"
#include "tools/text.h"

namespace dvrec {

namespace {

Failure cannotRead(const Recording& from, unsigned long frame, const std::string& fault) {
    return {ExitStatus::cannotRead, "Frame " + std::to_string(frame) + " of " + quoted(from.file().name()) +
                                        " " + fault + ". 'dvrec repair' saves the others."};
}

} // namespace

Written copyFrames(Recording& from, unsigned long first, unsigned long last, Kind kind,
                   const Arguments& arguments) {
    const InputFile& source = from.file();
    if (from.frames() == 0) {
        throw Failure{ExitStatus::cannotRead, quoted(source.name()) + " holds no whole frame."};
    }
    if (first > last || last >= from.frames()) {
        throw Failure{ExitStatus::usage,
                      format("There is no range from frame %lu to %lu: the last frame is %lu.", first, last,
                             from.frames() - 1)};
    }
    OutputFile output(arguments.files[1], arguments.force, source);
    const unsigned long size = from.place(first).size;
    Written written{kind, last - first + 1, 0};
    {
        const std::unique_ptr<Sink> sink = createSink(kind, output, size);
        Progress progress("writing " + quoted(output.name()), arguments.progress);
        Slot slot;
        for (unsigned long frame = first; frame <= last; ++frame) {
            std::string fault;
            if (!from.read(frame, slot, fault)) {
                throw cannotRead(from, frame, fault);
            }
            if (slot.frame().size() != size) {
                throw cannotRead(
                    from, frame,
                    format("has %u bytes and those before have %lu, which do not go into one file",
                           static_cast<unsigned>(slot.frame().size()), size));
            }
            sink->write(slot);
            progress.update((frame - first + 1ull) * size,
                            static_cast<unsigned long long>(written.frames) * size);
        }
        sink->finish();
    }
    written.bytes = InputFile(output.temporaryName()).size();
    output.publish();
    return written;
}

Written copyAll(Recording& from, Kind kind, const Arguments& arguments) {
    return copyFrames(from, 0, from.frames() > 0 ? from.frames() - 1 : 0, kind, arguments);
}

std::string describe(const Written& written, const Arguments& arguments) {
    return quoted(arguments.files[1]) + ": " + describe(written.kind) + ", " +
           counted(written.frames, "frame") + ", " + counted(written.bytes, "byte");
}

} // namespace dvrec
