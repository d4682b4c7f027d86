#include "tools/arguments.h"

#include "tools/failure.h"
#include "tools/text.h"

#include <algorithm>

namespace dvrec {

namespace {

[[noreturn]] void refuse(const std::string& sentence) {
    throw Failure{ExitStatus::usage, sentence};
}

Position position(const std::string& option, const std::wstring& text) {
    const std::optional<Position> read = Position::read(text);
    if (!read) {
        refuse("--" + option +
               " takes a frame's number, a time (0:12.5), a time code (01:02:03:20) or a time of day "
               "(@21:58:59), not " +
               quoted(text) + ".");
    }
    return *read;
}

unsigned long sectorSize(const std::string& option, const std::wstring& text) {
    constexpr unsigned long largest = 0x10000;
    for (unsigned long size = 1; size <= largest; size *= 2) {
        if (text == std::to_wstring(size)) {
            return size;
        }
    }
    refuse("--" + option + " takes the bytes of a sector, a power of two up to 65536, not " + quoted(text) +
           ".");
}

bool isUpperField(const std::wstring& text) {
    if (text != L"top" && text != L"bottom") {
        refuse("--field takes 'top' or 'bottom', not " + quoted(text) + ".");
    }
    return text == L"top";
}

/// Reads the words one by one.
class Reader {
public:
    Reader(const std::vector<std::wstring>& words, const std::vector<std::string>& options)
        : words_(words), options_(options) {}

    Arguments read() {
        bool onlyFiles = false;
        while (next_ < words_.size()) {
            const std::wstring& word = words_[next_++];
            if (onlyFiles || word.size() < 2 || word[0] != L'-') {
                result_.files.push_back(openable(word));
            } else if (word == L"--") {
                onlyFiles = true;
            } else {
                readOption(word);
            }
        }
        return result_;
    }

private:
    void readOption(const std::wstring& word) {
        const size_t equals = word.find(L'=');
        const std::string option = utf8(word.substr(0, equals));
        const std::string name = option == "-h" ? "help" : option.substr(option.starts_with("--") ? 2 : 0);
        if (name != "help" && std::find(options_.begin(), options_.end(), name) == options_.end()) {
            refuse("This command has no option '" + option + "'.");
        }
        if (bool* flag = flagFor(name)) {
            if (equals != std::wstring::npos) {
                refuse("--" + name + " takes no value.");
            }
            *flag = true;
        } else {
            takeValue(name, equals != std::wstring::npos ? word.substr(equals + 1) : nextWord(name));
        }
    }

    std::wstring nextWord(const std::string& name) {
        if (next_ == words_.size()) {
            refuse("--" + name + " needs a value behind it.");
        }
        return words_[next_++];
    }

    bool* flagFor(const std::string& name) {
        if (name == "json") {
            return &result_.json;
        }
        if (name == "progress") {
            return &result_.progress;
        }
        if (name == "force") {
            return &result_.force;
        }
        if (name == "square") {
            return &result_.square;
        }
        if (name == "no-sound") {
            return &result_.noSound;
        }
        return name == "help" ? &result_.help : nullptr;
    }

    void takeValue(const std::string& name, const std::wstring& text) {
        if (name == "sector") {
            result_.sector = sectorSize(name, text);
        } else if (name == "clip") {
            result_.clip = text;
        } else if (name == "field") {
            result_.upperField = isUpperField(text);
        } else {
            (name == "from" ? result_.from
             : name == "to" ? result_.to
                            : result_.frame) = position(name, text);
        }
    }

    const std::vector<std::wstring>& words_;
    const std::vector<std::string>& options_;
    size_t next_ = 0;
    Arguments result_;
};

} // namespace

Arguments readArguments(const std::vector<std::wstring>& words, const std::vector<std::string>& options,
                        size_t least, size_t most) {
    Arguments arguments = Reader(words, options).read();
    const size_t given = arguments.files.size();
    if (!arguments.help && (given < least || given > most)) {
        const std::string taken = most == least ? counted(least, "file")
                                  : most == anyNumber
                                      ? counted(least, "file") + " or more"
                                      : std::to_string(least) + " or " + counted(most, "file");
        refuse("This command takes " + taken + ", and " + std::to_string(given) + " were given.");
    }
    return arguments;
}

} // namespace dvrec
