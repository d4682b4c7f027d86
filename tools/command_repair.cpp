#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace dvrec {

namespace {

using recording::SearchedReader;

/// What a repair could not save.
struct Losses {
    std::vector<SearchedReader::Hole> holes;
    unsigned long long lost = 0;
    unsigned long long damaged = 0; ///< those of them that begin as frames do and are not whole
    bool exact = true;              ///< otherwise at least so many are lost
};

Losses lossesOf(const SearchedReader& found) {
    Losses losses{found.holes()};
    for (const SearchedReader::Hole& hole : losses.holes) {
        losses.lost += hole.lost;
        losses.damaged += hole.damaged;
        losses.exact = losses.exact && hole.counted != SearchedReader::Counted::room;
    }
    return losses;
}

/// By what the frames were counted: for programs, and in words behind their number.
struct CountedText {
    SearchedReader::Counted counted;
    const char* identifier;
    const char* words;
};
constexpr CountedText countedTexts[] = {
    {SearchedReader::Counted::records, "records", ""},
    {SearchedReader::Counted::timeCode, "timeCode", ", by the time code"},
    {SearchedReader::Counted::header, "header", ", by the file's header"},
    {SearchedReader::Counted::room, "room", " or more"},
};

const CountedText& textOf(SearchedReader::Counted counted) {
    return *std::find_if(std::begin(countedTexts), std::end(countedTexts),
                         [counted](const CountedText& text) { return text.counted == counted; });
}

void reportJson(const Written& written, const Losses& losses, const Arguments& arguments) {
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8(arguments.files[0]));
    json.add("out", utf8(arguments.files[1]));
    json.add("kind", rowOf(written.kind).identifier);
    json.add("frames", written.frames);
    json.add("bytes", written.bytes);
    json.add("lost", losses.lost);
    json.add("exact", losses.exact);
    json.add("damaged", losses.damaged);
    json.beginList("holes");
    for (const SearchedReader::Hole& hole : losses.holes) {
        json.beginObject();
        json.add("frame", hole.frame);
        json.add("offset", hole.offset);
        json.add("lost", hole.lost);
        json.add("counted", textOf(hole.counted).identifier);
        json.end();
    }
    json.end();
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

void reportText(const Written& written, const Losses& losses, const Arguments& arguments) {
    std::printf("%s\nsaved: %s\nlost: %s%s", describe(written, arguments).c_str(),
                counted(written.frames, "frame").c_str(), losses.exact ? "" : "at least ",
                losses.lost == 0 ? "nothing" : counted(losses.lost, "frame").c_str());
    if (losses.damaged > 0) {
        std::printf(", %llu of them cut off or damaged inside", losses.damaged);
    }
    std::printf("\n");
    constexpr size_t mostListed = 20;
    for (size_t i = 0; i < losses.holes.size() && i < mostListed; ++i) {
        const SearchedReader::Hole& hole = losses.holes[i];
        const std::string place =
            hole.frame < written.frames ? format("in front of the new frame %lu", hole.frame) : "at the end";
        std::printf("  %s, from byte %llu of the old file: %s%s\n", place.c_str(), hole.offset,
                    counted(hole.lost, "frame").c_str(), textOf(hole.counted).words);
    }
    if (losses.holes.size() > mostListed) {
        std::printf("  and at %s more (--json lists all)\n",
                    counted(losses.holes.size() - mostListed, "place").c_str());
    }
}

} // namespace

ExitStatus repair(const Arguments& arguments) {
    std::unique_ptr<recording::SearchedReader> found;
    {
        Progress progress("searching " + quoted(arguments.files[0]), arguments.progress);
        found = openDamaged(arguments.files[0], [&](unsigned long long done, unsigned long long all) {
            progress.update(done, all);
            return true;
        });
    }
    const wchar_t* const out = arguments.files[1].c_str();
    const recording::KindRow& named = recording::rowOfName(out);
    const recording::KindRow& own = rowOf(found->kind());
    const bool sameKind = own.isMeantBy(out);
    if (!sameKind && *named.extension == '\0') {
        throw Failure{ExitStatus::usage, quoted(arguments.files[0]) + " is of the kind '" + own.description +
                                             "'; give OUT the extension " + own.extension + "."};
    }
    const Written written = copyAll(*found, sameKind ? own.kind : named.kind, false, arguments);
    const Losses losses = lossesOf(*found);
    arguments.json ? reportJson(written, losses, arguments) : reportText(written, losses, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
