#include "app/settings.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <set>

namespace app {

namespace {

constexpr std::size_t mostRecent = 10;
constexpr std::size_t mostFindings = 20;

constexpr char mainSection[] = "marvo-replay";
constexpr char keySection[] = "keys";
constexpr char recentSection[] = "recent";
constexpr char keptSection[] = "not understood";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; });
    return result;
}

/// One line of the main section: its name, what it may be, how it is read and written.
struct Row {
    const char* name;
    std::function<bool(Settings&, const std::string&)> read;
    std::function<std::string(const Settings&)> write;
    std::function<std::wstring(Language)> allowed;
};

Row wholeNumber(const char* name, int Settings::*member, int least, int most, bool zeroToo = false) {
    return {name,
            [=](Settings& settings, const std::string& value) {
                int number = 0;
                const char* const end = value.data() + value.size();
                const std::from_chars_result read = std::from_chars(value.data(), end, number);
                const bool right = read.ec == std::errc() && read.ptr == end &&
                                   ((number >= least && number <= most) || (zeroToo && number == 0));
                settings.*member = right ? number : settings.*member;
                return right;
            },
            [=](const Settings& settings) { return std::to_string(settings.*member); },
            [=](Language language) {
                return text(Text::rangeOf, language, {std::to_wstring(least), std::to_wstring(most)});
            }};
}

/// Two words, of which the first is true.
Row choice(const char* name, std::function<bool(const Settings&)> get,
           std::function<void(Settings&, bool)> set, const char* yes, const char* no) {
    return {
        name,
        [=](Settings& settings, const std::string& value) {
            const std::string word = lower(value);
            if (word != yes && word != no) {
                return false;
            }
            set(settings, word == yes);
            return true;
        },
        [=](const Settings& settings) { return get(settings) ? yes : no; },
        [=](Language language) { return text(Text::oneOf, language, {wide(std::string(yes) + ", " + no)}); }};
}

Row yesNo(const char* name, bool Settings::*member) {
    return choice(
        name, [=](const Settings& settings) { return settings.*member; },
        [=](Settings& settings, bool on) { settings.*member = on; }, "yes", "no");
}

Row anyText(const char* name, std::wstring Settings::*member) {
    return {name,
            [=](Settings& settings, const std::string& value) {
                settings.*member = wide(value);
                return true;
            },
            [=](const Settings& settings) { return utf8(settings.*member); },
            [](Language) { return std::wstring(); }};
}

const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        anyText("camera", &Settings::camera),
        anyText("folder", &Settings::folder),
        choice(
            "format", [](const Settings& settings) { return settings.raw; },
            [](Settings& settings, bool raw) { settings.raw = raw; }, "raw", "avi"),
        wholeNumber("delay", &Settings::delay_ms, 0, 60000),
        wholeNumber("ring", &Settings::ring_frames, 25, 2000),
        yesNo("deinterlace", &Settings::deinterlace),
        choice(
            "language", [](const Settings& settings) { return settings.language == Language::german; },
            [](Settings& settings, bool german) {
                settings.language = german ? Language::german : Language::english;
            },
            "german", "english"),
        wholeNumber("monitor", &Settings::outputMonitor, 0, 16),
        wholeNumber("rolling", &Settings::rolling_min, 1, 240),
        yesNo("back-to-live", &Settings::backToLive),
        yesNo("mute", &Settings::mute),
        wholeNumber("port", &Settings::port, 1024, 65535, true),
        anyText("token", &Settings::token),
    };
    return table;
}

/// Reads a settings file line by line.
class Parser {
public:
    explicit Parser(std::vector<std::wstring>& findings) : findings_(findings) {}

    Settings parse(std::string_view text, Language language) {
        language_ = language;
        settings_.language = language;
        if (text.starts_with("\xef\xbb\xbf")) {
            text.remove_prefix(3);
        }
        for (number_ = 1; !text.empty(); ++number_) {
            const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size()));
            text.remove_prefix(std::min(line.size() + 1, text.size()));
            take(trimmed(line));
        }
        return settings_;
    }

private:
    void take(std::string_view line) {
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            return;
        }
        if (line.front() == '[' && line.back() == ']') {
            section_ = lower(trimmed(line.substr(1, line.size() - 2)));
            const char* const known[] = {mainSection, keySection, recentSection, keptSection};
            if (std::none_of(std::begin(known), std::end(known),
                             [this](const char* name) { return section_ == name; })) {
                keep(line, Text::settingsNoLine, line);
            }
            return;
        }
        const std::size_t equals = line.find('=');
        if (section_ == keptSection) {
            settings_.kept.emplace_back(line);
        } else if (equals == line.npos) {
            keep(line, Text::settingsNoLine, line);
        } else {
            takePair(line, lower(trimmed(line.substr(0, equals))),
                     std::string(trimmed(line.substr(equals + 1))));
        }
    }

    void takePair(std::string_view line, const std::string& name, const std::string& value) {
        if (section_ == recentSection && name == "file") {
            if (settings_.recent.size() < mostRecent && !value.empty()) {
                settings_.recent.push_back(wide(value));
            }
            return;
        }
        const bool known = section_ == mainSection || section_.empty() ? takeSetting(name, value)
                           : section_ == keySection                    ? takeKeys(name, value)
                                                                       : false;
        if (!known) {
            keep(line, Text::settingsUnknown, name);
        } else if (!seen_.insert(section_ + "." + name).second) {
            find(Text::settingsTwice, {wide(name)});
        }
    }

    bool takeSetting(const std::string& name, const std::string& value) {
        for (const Row& row : rows()) {
            if (row.name != name) {
                continue;
            }
            if (!row.read(settings_, value)) {
                find(Text::settingsValue,
                     {wide(name), wide(value), row.allowed(language_), wide(row.write(settings_))});
            }
            return true;
        }
        return false;
    }

    bool takeKeys(const std::string& name, const std::string& value) {
        const std::optional<Command> command = commandOf(name);
        std::wstring why;
        if (command && !settings_.keys.set(*command, wide(value), language_, why)) {
            find(Text::settingsKey, {why});
        }
        return command.has_value();
    }

    void keep(std::string_view line, Text what, std::string_view named) {
        settings_.kept.emplace_back(line);
        find(what, {wide(std::string(named))});
    }

    void find(Text what, std::vector<std::wstring> values) {
        values.insert(values.begin(), std::to_wstring(number_));
        if (findings_.size() < mostFindings) {
            findings_.push_back(text(what, language_, values));
        }
    }

    std::vector<std::wstring>& findings_;
    Settings settings_;
    Language language_ = Language::english;
    std::string section_;
    std::set<std::string> seen_;
    int number_ = 1;
};

} // namespace

void Settings::addRecent(const std::wstring& file) {
    std::erase_if(recent, [&](const std::wstring& known) { return samePath(known, file); });
    recent.insert(recent.begin(), file);
    recent.resize(std::min(recent.size(), mostRecent));
}

Settings SettingsFile::parse(const std::string& text, std::vector<std::wstring>& findings) {
    // What is wrong is told in the file's own language, wherever that stands in it.
    std::vector<std::wstring> unused;
    const Language language = Parser(unused).parse(text, Language::english).language;
    return Parser(findings).parse(text, language);
}

std::string SettingsFile::format(const Settings& settings) {
    const auto heading = [](const char* name) { return std::string("[") + name + "]\n"; };
    std::string result = heading(mainSection);
    for (const Row& row : rows()) {
        result += std::string(row.name) + " = " + row.write(settings) + "\n";
    }
    std::string keys;
    for (const CommandInfo& row : commands()) {
        if (settings.keys.changed(row.command)) {
            keys += std::string(row.name) + " = " + utf8(settings.keys.text(row.command)) + "\n";
        }
    }
    result += keys.empty() ? "" : heading(keySection) + keys;
    result += settings.recent.empty() ? "" : heading(recentSection);
    for (const std::wstring& file : settings.recent) {
        result += "file = " + utf8(file) + "\n";
    }
    result += settings.kept.empty() ? "" : heading(keptSection);
    for (const std::string& line : settings.kept) {
        result += line + "\n";
    }
    return result;
}

Settings SettingsFile::read(Disk& disk, const std::wstring& file, std::vector<std::wstring>& findings) {
    std::string text;
    std::wstring why;
    if (!disk.exists(file)) {
        return {};
    }
    if (!disk.read(file, text, why)) {
        findings.push_back(app::text(Text::settingsUnreadable, Language::english, {nameOf(file), why}));
        return {};
    }
    return parse(text, findings);
}

bool SettingsFile::write(Disk& disk, const std::wstring& file, const Settings& settings, std::wstring& why) {
    return disk.replace(file, format(settings), why);
}

} // namespace app
