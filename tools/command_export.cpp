#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/text.h"

#include <cstdio>

namespace dvrec {

namespace {

/// Says on the standard output what was made of which frames.
void report(const Written& written, unsigned long first, const Arguments& arguments) {
    if (!arguments.json) {
        std::printf("%s\n", describe(written, arguments).c_str());
        return;
    }
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("out", utf8(arguments.files[1]));
    json.add("kind", identifier(written.kind));
    json.add("from", first);
    json.add("frames", written.frames);
    json.add("bytes", written.bytes);
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

} // namespace

ExitStatus exportRange(const Arguments& arguments) {
    const bool avi = hasExtension(arguments.files[1], L".avi");
    if (!avi && !hasExtension(arguments.files[1], L".dv")) {
        throw Failure{ExitStatus::usage,
                      quoted(arguments.files[1]) +
                          " ends neither with .dv nor with .avi, so what it should become is not clear."};
    }
    const std::unique_ptr<Recording> from = openRecording(arguments.files[0], arguments.sector);
    const unsigned long first = arguments.from.value_or(0);
    const unsigned long last = arguments.to.value_or(from->frames() > 0 ? from->frames() - 1 : 0);
    report(copyFrames(*from, first, last, avi ? Kind::avi : Kind::stream, arguments), first, arguments);
    return ExitStatus::fine;
}

ExitStatus convert(const Arguments& arguments) {
    const Kind kind = hasExtension(arguments.files[1], L".avi") ? Kind::avi : Kind::raw;
    const std::unique_ptr<Recording> from = openRecording(arguments.files[0], arguments.sector);
    report(copyAll(*from, kind, arguments), 0, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
