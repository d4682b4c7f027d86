#include "app/clip_file.h"

#include "app/moment.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace app {

namespace {

constexpr char headLine[] = "marvo clips 1: ";
constexpr char noTime[] = "-";

/// The part of `line` up to the next tab, which is taken off with it.
std::string_view takeField(std::string_view& line) {
    const std::size_t tab = std::min(line.find('\t'), line.size());
    const std::string_view field = line.substr(0, tab);
    line.remove_prefix(std::min(tab + 1, line.size()));
    return field;
}

bool readNumber(std::string_view text, std::uint64_t& number) {
    const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

bool readTime(std::string_view text, std::int64_t& time_ms) {
    if (text == noTime) {
        time_ms = 0;
        return true;
    }
    Calendar day;
    int used = 0;
    const std::string whole(text);
    const int fields = std::sscanf(whole.c_str(), "%4d-%2d-%2d %2d:%2d:%2d.%3d%n", &day.year, &day.month,
                                   &day.day, &day.hour, &day.minute, &day.second, &day.millisecond, &used);
    if (fields != 7 || used != static_cast<int>(whole.size())) {
        return false;
    }
    time_ms = timeOfDay_ms(day);
    const Calendar back = calendarOf(time_ms);
    return back.month == day.month && back.day == day.day && back.hour == day.hour &&
           back.minute == day.minute && back.second == day.second;
}

/// Largest frame number that a clip may have; a list by others may have anything.
constexpr std::uint64_t mostFrames = 1ull << 40;

bool readClip(std::string_view line, Clip& clip) {
    const bool numbers = readNumber(takeField(line), clip.frames.first) &&
                         readNumber(takeField(line), clip.frames.last) &&
                         clip.frames.first <= clip.frames.last && clip.frames.last < mostFrames;
    if (!numbers || !readTime(takeField(line), clip.timeOfDay_ms) || line.empty()) {
        return false;
    }
    clip.name = wide(std::string(line));
    return true;
}

std::string timeField(std::int64_t time_ms) {
    if (time_ms == 0) {
        return noTime;
    }
    const Calendar day = calendarOf(time_ms);
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d.%03d", day.year, day.month, day.day,
                  day.hour, day.minute, day.second, day.millisecond);
    return buffer;
}

bool isBlank(std::string_view line) {
    return line.find_first_not_of(" \t") == line.npos;
}

} // namespace

std::wstring ClipFile::fileWord(const std::wstring& clipName) {
    constexpr std::size_t mostLetters = 100;
    std::wstring word = clipName.substr(0, mostLetters);
    std::replace_if(
        word.begin(), word.end(),
        [](wchar_t letter) {
            return letter < L' ' || std::wstring_view(L"<>:\"/\\|?*").find(letter) != std::wstring_view::npos;
        },
        L'_');
    word.resize(word.find_last_not_of(L". ") + 1);
    return word.empty() ? L"clip" : word;
}

ClipFileContent ClipFile::parse(const std::string& text, const std::wstring& recording, Language language) {
    ClipFileContent content;
    std::string_view rest(text);
    if (rest.starts_with("\xef\xbb\xbf")) {
        rest.remove_prefix(3);
    }
    const std::wstring own = nameOf(recording);
    bool headed = false;
    for (int number = 1; !rest.empty(); ++number) {
        std::string_view line = rest.substr(0, std::min(rest.find('\n'), rest.size()));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line = line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
        if (!headed) {
            const bool head = line.starts_with(headLine);
            const std::wstring named = head ? wide(std::string(line.substr(sizeof headLine - 1))) : L"";
            if (!head || !samePath(named, own)) {
                content.findings = {head ? app::text(Text::clipFileOther, language, {named, own})
                                         : app::text(Text::clipFileNone, language)};
                content.refused = true;
                return content;
            }
            headed = true;
            continue;
        }
        Clip clip;
        if (isBlank(line) || line.starts_with('#')) {
            if (!isBlank(line)) {
                content.kept.emplace_back(line);
            }
        } else if (readClip(line, clip)) {
            clip.file = recording;
            content.clips.push_back(clip);
        } else {
            content.kept.emplace_back(line);
            content.findings.push_back(
                app::text(Text::clipFileLine, language,
                          {std::to_wstring(number), wide(std::string(line.substr(0, 80)))}));
        }
    }
    return content;
}

std::string ClipFile::format(const std::wstring& recording, const std::vector<Clip>& clips,
                             const std::vector<std::string>& kept) {
    std::string text = headLine + utf8(nameOf(recording)) + "\n";
    for (const Clip& clip : clips) {
        text += std::to_string(clip.frames.first) + "\t" + std::to_string(clip.frames.last) + "\t" +
                timeField(clip.timeOfDay_ms) + "\t" + utf8(clip.name) + "\n";
    }
    for (const std::string& line : kept) {
        text += line + "\n";
    }
    return text;
}

ClipFileContent ClipFile::read(Disk& disk, const std::wstring& recording, Language language) {
    const std::wstring name = nameFor(recording);
    std::string text;
    std::wstring why;
    if (!disk.exists(name)) {
        return {};
    }
    if (!disk.read(name, text, why)) {
        ClipFileContent content;
        content.findings = {app::text(Text::clipFileUnreadable, language, {nameOf(name), why})};
        content.refused = true;
        return content;
    }
    return parse(text, recording, language);
}

bool ClipFile::write(Disk& disk, const std::wstring& recording, const std::vector<Clip>& clips,
                     const std::vector<std::string>& kept, std::wstring& why) {
    const std::wstring name = nameFor(recording);
    if (clips.empty() && kept.empty()) {
        return !disk.exists(name) || disk.remove(name, why);
    }
    return disk.replace(name, format(recording, clips, kept), why);
}

} // namespace app
