#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/position.h"
#include "tools/standard_streams.h"
#include "tools/text.h"

#include <cstdio>

namespace dvrec {

namespace {

/// Says on the standard output what was made of which frames.
void report(const Written& written, unsigned long long first, const Arguments& arguments) {
    // The standard output may be taken.
    std::FILE* const to = isPipe(arguments.files[1]) ? stderr : stdout;
    if (!arguments.json) {
        std::fprintf(to, "%s\n", describe(written, arguments).c_str());
        return;
    }
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8Name(arguments.files[0]));
    json.add("out", utf8Name(arguments.files[1]));
    json.add("kind", rowOf(written.kind).identifier);
    json.add("from", first);
    json.add("frames", written.frames);
    json.add("bytes", written.bytes);
    json.add("soundRate", written.soundRate);
    json.add("soundChannels", written.soundChannels);
    json.end();
    std::fputs(json.text().c_str(), to);
}

} // namespace

ExitStatus exportRange(const Arguments& arguments) {
    const recording::KindRow& row = kindOfExport(arguments.files[1]);
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const Range range = rangeOf(*from, arguments);
    report(copyFrames(*from, range.first, range.last, row.kind, !arguments.noSound, arguments), range.first,
           arguments);
    return ExitStatus::fine;
}

ExitStatus convert(const Arguments& arguments) {
    refusePipe(arguments.files[1], "A converted recording");
    const recording::Kind kind = recording::rowOfName(arguments.files[1].c_str()).kind;
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    report(copyAll(*from, kind, !arguments.noSound, arguments), 0, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
