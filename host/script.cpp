#include "host/script.h"

#include "host/expression.h"
#include "host/status.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace host {

namespace {

/// The commands and their arguments. A word in lower case stands for itself, words joined by | are
/// alternatives, TEXT is the rest of the line, FILE, NAME and KEY are words, every other one in upper case is
/// an expression, and what follows [ may be left out.
constexpr const char* forms[] = {
    "init [input NUMBER]",
    "playinit FROM TO FILE",
    "live",
    "record [FILE]",
    "stop",
    "pause",
    "resume",
    "replay FROM TO [FILE]",
    "last SECONDS",
    "speed FACTOR",
    "seek FRAME",
    "mark in|out [FRAME [ELEMENT]]",
    "element NUMBER",
    "show",
    "hide",
    "size WIDTH HEIGHT",
    "pos X Y",
    "done",
    "quit",
    "wait MILLISECONDS",
    "wait-frame FRAME MILLISECONDS",
    "wait-written FRAME MILLISECONDS",
    "wait-shown FRAME MILLISECONDS",
    "expect VALUE ==|!=|<|<=|>|>=|near VALUE [TOLERANCE]",
    "watch start|stop NAME",
    "expect-sequence NAME range FROM TO speed FACTOR",
    "let NAME VALUE",
    "screenshot NAME",
    "log TEXT",
    "call TEXT",
    "set input|recfile|playfile|remotefile|playdelay|maxrec|maxplay|maxfilesize|deinterlace TEXT",
};

std::vector<std::string> splitAtBlanks(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::string trimmed(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

const char* findForm(const std::string& command) {
    for (const char* form : forms) {
        if (splitAtBlanks(form).front() == command) {
            return form;
        }
    }
    return nullptr;
}

/// Reads the words of a line one by one.
class WordReader {
public:
    explicit WordReader(const std::string& line) : line_(line) {}

    /// The next word, unquoted. False at the end of the line or at a comment, or, with a reason, after a
    /// quote that is not closed.
    bool next(std::string& word, std::string& error) {
        skipBlanks();
        if (at_ == line_.size() || line_[at_] == '#') {
            return false;
        }
        const bool quoted = line_[at_] == '"';
        const size_t end = quoted ? line_.find('"', ++at_) : line_.find_first_of(" \t", at_);
        if (quoted && end == std::string::npos) {
            error = "a quote is not closed";
            return false;
        }
        word = line_.substr(at_, end - at_);
        at_ = end == std::string::npos ? line_.size() : end + (quoted ? 1 : 0);
        return true;
    }

    /// All that has not been read yet.
    std::string rest() {
        skipBlanks();
        std::string text = line_.substr(at_);
        at_ = line_.size();
        if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
            text = text.substr(1, text.size() - 2);
        }
        return text;
    }

private:
    void skipBlanks() { at_ = std::min(line_.find_first_not_of(" \t", at_), line_.size()); }

    const std::string& line_;
    size_t at_ = 0;
};

/// Reads and checks one line after the other, remembering the names that the script makes.
class LineChecker {
public:
    /// Reads the line's words. Empty when it is a command, else what is wrong; no words for an empty line.
    std::string read(ScriptLine& line) {
        WordReader reader(line.text);
        std::string error;
        std::string word;
        if (!reader.next(word, error)) {
            return error;
        }
        line.words.push_back(word);
        const char* form = findForm(word);
        if (form == nullptr) {
            return "unknown command " + word;
        }
        return readArguments(line, form, reader);
    }

private:
    std::string readArguments(ScriptLine& line, const char* form, WordReader& reader) {
        const std::vector<std::string> places = splitAtBlanks(form);
        const std::string usage = std::string("; usage: ") + form;
        std::string error;
        std::string word;
        for (size_t i = 1; i < places.size(); ++i) {
            std::string place = places[i];
            const bool mayEnd = place.front() == '[';
            std::erase_if(place, [](char c) { return c == '[' || c == ']'; });
            if (place == "TEXT") {
                word = reader.rest();
            } else if (!reader.next(word, error)) {
                if (!error.empty()) {
                    return error;
                }
                return mayEnd ? "" : place + " is missing" + usage;
            }
            error = checkArgument(line.words.front(), place, word);
            if (!error.empty()) {
                return error + usage;
            }
            line.words.push_back(word);
        }
        if (line.words.front() == "let") {
            made_.insert(line.words[1]);
        }
        if (reader.next(word, error)) {
            return word + " is too much" + usage;
        }
        return error;
    }

    std::string checkArgument(const std::string& command, const std::string& place,
                              const std::string& word) const {
        if (word.empty()) {
            return place + " is empty";
        }
        const bool isPlaceholder = place.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") != std::string::npos;
        if (!isPlaceholder) {
            const std::string choices = "|" + place + "|";
            return choices.find("|" + word + "|") != std::string::npos ? "" : word + " must be " + place;
        }
        if (place == "TEXT" || place == "FILE") {
            return {};
        }
        if (place == "NAME") {
            if (!isName(word)) {
                return word + " is no name (a letter, then letters, digits, dots and underscores)";
            }
            return command == "let" && Status().value(word) ? word + " is the name of a value already" : "";
        }
        std::string error;
        evaluate(
            word,
            [this](const std::string& name) -> std::optional<double> {
                return made_.count(name) != 0 ? 0.0 : Status().value(name);
            },
            error);
        return error;
    }

    std::set<std::string> made_;
};

} // namespace

Script::Script(const std::string& text) {
    LineChecker checker;
    std::istringstream stream(text);
    int number = 0;
    for (std::string raw; std::getline(stream, raw);) {
        ScriptLine line;
        line.number = ++number;
        line.text = trimmed(raw);
        const std::string error = checker.read(line);
        if (!error.empty()) {
            errors_.push_back({line.number, error});
        } else if (!line.words.empty()) {
            lines_.push_back(std::move(line));
        }
    }
}

std::string Script::help() {
    std::string text;
    for (const char* form : forms) {
        text += std::string("  ") + form + "\n";
    }
    return text;
}

} // namespace host
