#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/progress.h"
#include "tools/text.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace dvrec {

namespace {

/// What a repair could not save.
struct Losses {
    std::vector<recording::SearchedReader::Hole> holes;
    unsigned long damaged = 0;   ///< frames that begin as such and are not whole
    unsigned long long lost = 0; ///< frames, about
};

Losses lossesOf(const recording::SearchedReader& found) {
    Losses losses{found.holes(), found.damaged(), 0};
    const auto inHoles = std::accumulate(
        losses.holes.begin(), losses.holes.end(), 0ull,
        [](unsigned long long sum, const recording::SearchedReader::Hole& hole) { return sum + hole.lost; });
    const auto unkept = found.promised() > found.frames() ? found.promised() - found.frames() : 0;
    // A damaged frame leaves a hole, and both are missing from what the headers promise.
    losses.lost = std::max<unsigned long long>({inHoles, losses.damaged, unkept});
    return losses;
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
    json.add("damaged", losses.damaged);
    json.beginList("holes");
    for (const recording::SearchedReader::Hole& hole : losses.holes) {
        json.beginObject();
        json.add("frame", hole.frame);
        json.add("offset", hole.offset);
        json.add("lost", hole.lost);
        json.end();
    }
    json.end();
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

void reportText(const Written& written, const Losses& losses, const Arguments& arguments) {
    std::printf("%s\nsaved: %s\n", describe(written, arguments).c_str(),
                counted(written.frames, "frame").c_str());
    std::printf("lost: %s%s", losses.lost == 0 ? "nothing" : "about ",
                losses.lost == 0 ? "" : counted(losses.lost, "frame").c_str());
    if (losses.damaged > 0) {
        std::printf(", %lu of them cut off or damaged inside", losses.damaged);
    }
    std::printf("\n");
    constexpr size_t mostListed = 20;
    for (size_t i = 0; i < losses.holes.size() && i < mostListed; ++i) {
        std::printf("  in front of the new frame %lu, from byte %llu of the old file: about %s\n",
                    losses.holes[i].frame, losses.holes[i].offset,
                    counted(losses.holes[i].lost, "frame").c_str());
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
    const Written written = copyAll(*found, sameKind ? own.kind : named.kind, arguments);
    const Losses losses = lossesOf(*found);
    arguments.json ? reportJson(written, losses, arguments) : reportText(written, losses, arguments);
    return ExitStatus::fine;
}

} // namespace dvrec
