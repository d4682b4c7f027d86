// Commands as text.
#include "marvo/core/text.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <vector>

using namespace flat;

namespace {

using Words = std::vector<std::string>;

/// The line's words; a quote begins one that goes up to the next quote.
Words wordsOf(const std::string& line) {
    constexpr const char* blanks = " \t\r\n";
    Words words;
    for (std::size_t at = line.find_first_not_of(blanks); at != std::string::npos;
         at = line.find_first_not_of(blanks, at)) {
        const bool isQuoted = line[at] == '"';
        const std::size_t begin = at + (isQuoted ? 1 : 0);
        const std::size_t end = isQuoted ? line.find('"', begin) : line.find_first_of(blanks, begin);
        if (isQuoted && end == std::string::npos) {
            fail(MARVO_E_ARGUMENT, "A quote is not closed in: " + line);
        }
        words.push_back(line.substr(begin, end == std::string::npos ? end : end - begin));
        at = end == std::string::npos ? line.size() : end + (isQuoted ? 1 : 0);
    }
    return words;
}

/// A number that is all of the word. Throws MARVO_E_ARGUMENT.
template <class Number, class Convert>
Number numberOf(const std::string& word, Convert convert) {
    char* end = nullptr;
    errno = 0;
    const Number value = convert(word.c_str(), &end);
    if (word.empty() || *end != '\0' || errno == ERANGE) {
        fail(MARVO_E_ARGUMENT, "'" + word + "' is no number that fits here.");
    }
    return value;
}
marvo_i64 whole(const std::string& word) {
    return numberOf<marvo_i64>(word,
                               [](const char* text, char** end) { return std::strtoll(text, end, 10); });
}
marvo_u64 frame(const std::string& word) {
    const marvo_i64 value = whole(word);
    if (value < -1) {
        fail(MARVO_E_RANGE, "There is no frame " + word + ".");
    }
    return static_cast<marvo_u64>(value);
}
marvo_u32 small(const std::string& word) {
    const marvo_i64 value = whole(word);
    if (value < 0 || value > 0xFFFFFFFF) {
        fail(MARVO_E_RANGE, "'" + word + "' is out of range.");
    }
    return static_cast<marvo_u32>(value);
}
double fraction(const std::string& word) {
    return numberOf<double>(word, [](const char* text, char** end) { return std::strtod(text, end); });
}
const char* optional(const Words& words, std::size_t index) {
    return words.size() > index ? words[index].c_str() : nullptr;
}

/// A command: its word, how many arguments it takes, and the function that it stands for.
struct Row {
    const char* word;
    std::size_t least;
    std::size_t most;
    int (*run)(const Words& words);
};
constexpr Row rows[] = {
    {"live", 0, 0, [](const Words&) { return marvo_live(); }},
    {"pause", 0, 0, [](const Words&) { return marvo_pause(); }},
    {"resume", 0, 0, [](const Words&) { return marvo_resume(); }},
    {"replay", 2, 3, [](const Words& w) { return marvo_replay(frame(w[1]), frame(w[2]), optional(w, 3)); }},
    {"record", 0, 1, [](const Words& w) { return marvo_record_start(optional(w, 1)); }},
    {"stop", 0, 0, [](const Words&) { return marvo_record_stop(); }},
    {"flush", 0, 0, [](const Words&) { return marvo_record_flush(); }},
    {"speed", 1, 1, [](const Words& w) { return marvo_set_speed(fraction(w[1])); }},
    {"seek", 1, 1, [](const Words& w) { return marvo_seek(frame(w[1])); }},
    {"step", 1, 1, [](const Words& w) { return marvo_step(whole(w[1])); }},
    {"element", 1, 1, [](const Words& w) { return marvo_element_play(small(w[1])); }},
    {"mark", 3, 3, [](const Words& w) { return marvo_element_set(small(w[1]), frame(w[2]), frame(w[3])); }},
    {"marker", 1, 1, [](const Words& w) { return marvo_marker(w[1].c_str()); }},
    {"set", 2, 2, [](const Words& w) { return marvo_setting_set_text(w[1].c_str(), w[2].c_str()); }},
    {"log", 1, 1, [](const Words& w) { return marvo_log(w[1].c_str()); }},
};

} // namespace

int MARVO_CALL marvo_command(const char* line) {
    int result = MARVO_OK;
    const int read = guarded([&] {
        wideText(line, "command");
        const Words words = wordsOf(line);
        const auto* const row = std::find_if(std::begin(rows), std::end(rows), [&words](const Row& known) {
            return !words.empty() && words[0] == known.word;
        });
        if (row == std::end(rows)) {
            fail(MARVO_E_UNKNOWN,
                 "There is no command '" + (words.empty() ? std::string() : words[0]) + "'.");
        }
        const std::size_t count = words.size() - 1;
        if (count < row->least || count > row->most) {
            fail(MARVO_E_ARGUMENT,
                 vcore::format("The command '%s' takes %u to %u arguments, not %u.", row->word,
                               static_cast<unsigned>(row->least), static_cast<unsigned>(row->most),
                               static_cast<unsigned>(count)));
        }
        result = row->run(words);
    });
    return read != MARVO_OK ? read : result;
}
