#include "tools/commands.h"
#include "tools/copy.h"
#include "tools/json_writer.h"
#include "tools/standard_streams.h"
#include "tools/text.h"

#include "app/clip_file.h"
#include "app/moment.h"

#include <algorithm>
#include <cstdio>

namespace dvrec {

namespace {

/// A clip with its number in the list, which begins with 1.
struct Numbered {
    size_t number;
    app::Clip clip;
};

/// What became of a clip that was exported.
struct Exported {
    std::wstring out;
    Written written;
};

app::ClipFileContent readClips(const std::wstring& recording) {
    const std::wstring name = app::ClipFile::nameFor(recording);
    recording::InputFile file;
    if (!file.open(name.c_str())) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND) {
            return {};
        }
        throw Failure{ExitStatus::cannotRead,
                      quoted(name) + " cannot be opened: " + systemMessage(GetLastError()) + "."};
    }
    constexpr unsigned long long mostBytes = 16 << 20;
    std::string text(static_cast<size_t>(std::min(file.size(), mostBytes)), '\0');
    text.resize(file.read(0, text.data(), text.size()));
    app::ClipFileContent content = app::ClipFile::parse(text, shown(recording), app::Language::english);
    if (content.refused) {
        throw Failure{ExitStatus::cannotRead, quoted(name) + ": " + utf8(content.findings.at(0))};
    }
    return content;
}

/// The clips that are meant: all, or that of --clip, by its number or else its name.
std::vector<Numbered> chosenClips(const app::ClipFileContent& content, const Arguments& arguments) {
    std::vector<Numbered> chosen;
    for (const app::Clip& clip : content.clips) {
        const size_t number = chosen.size() + 1;
        chosen.push_back({number, clip});
    }
    if (!arguments.clip) {
        return chosen;
    }
    const auto keep = [&](auto isMeant) {
        const auto found = std::find_if(chosen.begin(), chosen.end(), isMeant);
        return found != chosen.end() ? std::vector{*found} : std::vector<Numbered>();
    };
    std::vector<Numbered> one =
        keep([&](const Numbered& clip) { return std::to_wstring(clip.number) == *arguments.clip; });
    if (one.empty()) {
        one = keep([&](const Numbered& clip) { return clip.clip.name == *arguments.clip; });
    }
    if (one.empty()) {
        throw Failure{ExitStatus::usage, quoted(arguments.files[0]) + " has no clip " +
                                             quoted(*arguments.clip) + "; 'dvrec clips FILE' lists them."};
    }
    return one;
}

/// The name for a clip's file: "*" in `out` stands for the clip's number and name.
std::wstring outFor(const std::wstring& out, const Numbered& clip) {
    const size_t star = shown(out).find(L'*') == std::wstring::npos ? std::wstring::npos : out.rfind(L'*');
    if (star == std::wstring::npos) {
        return out;
    }
    const std::wstring number = (clip.number < 10 ? L"0" : L"") + std::to_wstring(clip.number);
    return openable(out.substr(0, star) + number + L" " + app::ClipFile::fileWord(clip.clip.name) +
                    out.substr(star + 1));
}

/// Looks at all that could be wrong before the first file is made.
std::vector<Exported> exportClips(recording::Reader& from, const std::vector<Numbered>& clips,
                                  const Arguments& arguments) {
    std::vector<Exported> exported;
    if (arguments.files.size() < 2) {
        return exported;
    }
    const std::wstring& out = arguments.files[1];
    refusePipe(out, "A clip");
    const recording::KindRow& row = kindOfExport(out);
    if (clips.size() > 1 && outFor(out, clips[0]) == out) {
        throw Failure{ExitStatus::usage,
                      "There are " + std::to_string(clips.size()) +
                          " clips: name one with --clip, or put '*' into OUT for their numbers and names."};
    }
    if (clips.empty()) {
        throw Failure{ExitStatus::usage, quoted(arguments.files[0]) + " has no clips to export."};
    }
    for (const Numbered& clip : clips) {
        if (clip.clip.frames.last >= from.frames()) {
            throw Failure{ExitStatus::cannotRead,
                          format("Clip %u ends with frame %llu, and the recording has %llu.",
                                 static_cast<unsigned>(clip.number),
                                 static_cast<unsigned long long>(clip.clip.frames.last), from.frames())};
        }
    }
    for (const Numbered& clip : clips) {
        Arguments one = arguments;
        one.files[1] = outFor(out, clip);
        const Written written =
            copyFrames(from, clip.clip.frames.first, clip.clip.frames.last, row.kind, !one.noSound, one);
        exported.push_back({one.files[1], written});
        if (!arguments.json) {
            std::printf("%s\n", describe(written, one).c_str());
            std::fflush(stdout);
        }
    }
    return exported;
}

std::string recordedText(const app::Clip& clip) {
    if (clip.timeOfDay_ms == 0) {
        return {};
    }
    const app::Calendar day = app::calendarOf(clip.timeOfDay_ms);
    return format("%04d-%02d-%02d %02d:%02d:%02d", day.year, day.month, day.day, day.hour, day.minute,
                  day.second);
}

double secondsOf(const recording::Reader& from, const app::Clip& clip) {
    const vdv::System* const system = vdv::systemOf(from.frameSize());
    return static_cast<double>(clip.frames.length()) / (system ? *system : vdv::system525).rate;
}

void reportJson(const recording::Reader& from, const std::vector<Numbered>& clips,
                const std::vector<Exported>& exported, const app::ClipFileContent& content,
                const Arguments& arguments) {
    JsonWriter json;
    json.beginObject();
    json.add("file", utf8Name(arguments.files[0]));
    json.beginList("clips");
    for (size_t i = 0; i < clips.size(); ++i) {
        const app::Clip& clip = clips[i].clip;
        json.beginObject();
        json.add("number", static_cast<unsigned long long>(clips[i].number));
        json.add("name", utf8(clip.name));
        json.add("from", static_cast<unsigned long long>(clip.frames.first));
        json.add("to", static_cast<unsigned long long>(clip.frames.last));
        json.add("duration", secondsOf(from, clip));
        json.add("recorded", recordedText(clip));
        if (i < exported.size()) {
            json.add("out", utf8Name(exported[i].out));
            json.add("bytes", exported[i].written.bytes);
        }
        json.end();
    }
    json.end();
    json.beginList("findings");
    for (const std::wstring& finding : content.findings) {
        json.add("", utf8(finding));
    }
    json.end();
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

void reportText(const recording::Reader& from, const std::vector<Numbered>& clips,
                const Arguments& arguments) {
    std::printf("%s: %s\n", quoted(arguments.files[0]).c_str(),
                clips.empty() ? "no clips" : counted(clips.size(), "clip").c_str());
    for (const Numbered& clip : clips) {
        std::printf("%4u  %s  frames %llu to %llu  %s%s%s\n", static_cast<unsigned>(clip.number),
                    durationText(secondsOf(from, clip.clip)).c_str(),
                    static_cast<unsigned long long>(clip.clip.frames.first),
                    static_cast<unsigned long long>(clip.clip.frames.last), recordedText(clip.clip).c_str(),
                    clip.clip.timeOfDay_ms == 0 ? "" : "  ", utf8(clip.clip.name).c_str());
    }
}

} // namespace

ExitStatus clips(const Arguments& arguments) {
    refusePipe(arguments.files[0], "A recording with clips");
    const std::unique_ptr<recording::Reader> from = openRecording(arguments.files[0], arguments.sector);
    const app::ClipFileContent content = readClips(arguments.files[0]);
    if (!arguments.json) {
        for (const std::wstring& finding : content.findings) {
            std::fprintf(stderr, "dvrec: %s\n", utf8(finding).c_str());
        }
    }
    const std::vector<Numbered> chosen = chosenClips(content, arguments);
    const std::vector<Exported> exported = exportClips(*from, chosen, arguments);
    if (arguments.json) {
        reportJson(*from, chosen, exported, content, arguments);
    } else if (arguments.files.size() < 2) {
        reportText(*from, chosen, arguments);
    }
    return ExitStatus::fine;
}

} // namespace dvrec
