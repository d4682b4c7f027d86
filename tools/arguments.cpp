#include "tools/arguments.h"

#include "tools/failure.h"
#include "tools/text.h"

#include <algorithm>

namespace dvrec {

namespace {

[[noreturn]] void refuse(const std::string& sentence) {
    throw Failure{ExitStatus::usage, sentence};
}

unsigned long number(const std::string& option, const std::wstring& text) {
    constexpr size_t mostDigits = 10;
    unsigned long long value = 0;
    bool decimal = !text.empty() && text.size() <= mostDigits;
    for (size_t i = 0; decimal && i < text.size(); ++i) {
        decimal = text[i] >= L'0' && text[i] <= L'9';
        value = value * 10 + static_cast<unsigned>(text[i] - L'0');
    }
    if (!decimal || value > 0xFFFFFFFFull) {
        refuse("--" + option + " takes a whole number from 0, not " + quoted(text) + ".");
    }
    return static_cast<unsigned long>(value);
}

unsigned long sectorSize(const std::string& option, const std::wstring& text) {
    const unsigned long value = number(option, text);
    constexpr unsigned long largest = 0x10000;
    if (value == 0 || value > largest || (value & (value - 1)) != 0) {
        refuse("--" + option + " takes the bytes of a sector, a power of two up to 65536, not " +
               quoted(text) + ".");
    }
    return value;
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
                result_.files.push_back(word);
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
            takeNumber(name, equals != std::wstring::npos ? word.substr(equals + 1) : nextWord(name));
        }
    }

    std::wstring nextWord(const std::string& name) {
        if (next_ == words_.size()) {
            refuse("--" + name + " needs a number behind it.");
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
        if (name == "no-sound") {
            return &result_.noSound;
        }
        return name == "help" ? &result_.help : nullptr;
    }

    void takeNumber(const std::string& name, const std::wstring& text) {
        if (name == "sector") {
            result_.sector = sectorSize(name, text);
        } else if (name == "from") {
            result_.from = number(name, text);
        } else if (name == "to") {
            result_.to = number(name, text);
        } else {
            result_.frame = number(name, text);
        }
    }

    const std::vector<std::wstring>& words_;
    const std::vector<std::string>& options_;
    size_t next_ = 0;
    Arguments result_;
};

} // namespace

Arguments readArguments(const std::vector<std::wstring>& words, const std::vector<std::string>& options,
                        size_t files) {
    Arguments arguments = Reader(words, options).read();
    if (!arguments.help && arguments.files.size() != files) {
        refuse("This command takes " + counted(files, "file") + ", and " +
               std::to_string(arguments.files.size()) + " were given.");
    }
    return arguments;
}

} // namespace dvrec
