#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/text.h"

#include <cstdio>

namespace dvrec {

namespace {

/// Says on the standard output what was made of which frames.
void report(const Written& written, unsigned long long first, const Arguments& arguments) {
    if (!arguments.json) {
        std::printf("%s\n", describe(written, arguments).c_str());
        return;
    }
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("out", utf8(arguments.files[1]));
    json.add("kind", rowOf(written.kind).identifier);
    json.add("from", first);
    json.add("frames", written.frames);
    json.add("bytes", written.bytes);
    json.add("soundRate", written.soundRate);
    json.add("soundChannels", written.soundChannels);
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

} // namespace

ExitStatus exportRange(const Arguments& arguments) {
    const recording::KindRow* const row = recording::rowOfExtension(arguments.files[1].c_str());
    if (!row) {
        std::string extensions;
        for (const recording::KindRow& other : recording::kinds()) {
            const bool first = extensions.empty() || *other.extension == '\0';
            extensions += (first ? "" : " and ") + std::string(other.extension);
        }
        throw Failure{ExitStatus::usage, quoted(arguments.files[1]) + " ends with none of " + extensions +
                                             ", so what it should become is not clear."};
    }
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const unsigned long long first = arguments.from.value_or(0);
    const unsigned long long last =
        arguments.to ? *arguments.to : from->frames() - (from->frames() > 0 ? 1 : 0);
    report(copyFrames(*from, first, last, row->kind, !arguments.noSound, arguments), first, arguments);
    return ExitStatus::fine;
}

ExitStatus convert(const Arguments& arguments) {
    const recording::Kind kind = recording::rowOfName(arguments.files[1].c_str()).kind;
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    report(copyAll(*from, kind, !arguments.noSound, arguments), 0, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
