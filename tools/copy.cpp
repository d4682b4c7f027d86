#include "tools/copy.h"

#include "tools/output_file.h"
#include "tools/progress.h"
#include "tools/text.h"

#include "marvo/recording/copy.h"

#include <cstdio>

namespace dvrec {

namespace {

using recording::Copied;

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
                   recording::Kind kind, bool sound, const Arguments& arguments) {
    if (from.frames() == 0) {
        throw Failure{ExitStatus::cannotRead, quoted(from.name()) + " holds no whole frame."};
    }
    if (first > last || last >= from.frames()) {
        throw Failure{ExitStatus::usage,
                      format("There is no range from frame %llu to %llu: the last frame is %llu.", first,
                             last, from.frames() - 1)};
    }
    OutputFile output(arguments.files[1], arguments.force, from.name());
    Copied copied;
    {
        const unsigned long size = sizeOf(from, first);
        Progress progress("writing " + quoted(output.name()), arguments.progress);
        const auto tell = [&](unsigned long long done, unsigned long long all) {
            progress.update(done * size, all * size);
            return true;
        };
        copied = recording::copy(from, output.temporaryName().c_str(), {first, last, kind, sound}, tell);
    }
    if (copied.end == Copied::End::cannotRead) {
        throw Failure{ExitStatus::cannotRead, format("Frame %llu of ", copied.frame) + quoted(from.name()) +
                                                  " " + utf8(copied.reason) +
                                                  ". 'dvrec repair' saves the others."};
    }
    if (copied.end == Copied::End::cannotWrite) {
        throw cannotWrite(output.name(), utf8(copied.reason));
    }
    if (!copied.note.empty()) {
        std::fprintf(stderr, "note: %s.\n", utf8(copied.note).c_str());
    }
    const unsigned long long bytes = writtenBytes(output.temporaryName());
    output.publish();
    return {kind, last - first + 1, bytes, copied.soundRate, copied.soundChannels};
}

Written copyAll(recording::Reader& from, recording::Kind kind, bool sound, const Arguments& arguments) {
    return copyFrames(from, 0, from.frames() > 0 ? from.frames() - 1 : 0, kind, sound, arguments);
}

std::string describe(const Written& written, const Arguments& arguments) {
    const std::string sound = written.soundRate == 0 ? std::string()
                                                     : format(", sound of %lu Hz in ", written.soundRate) +
                                                           counted(written.soundChannels, "channel");
    return quoted(arguments.files[1]) + ": " + describe(written.kind) + ", " +
           counted(written.frames, "frame") + ", " + counted(written.bytes, "byte") + sound;
}

} // namespace dvrec
