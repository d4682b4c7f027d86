/// @file
/// The text form of a script: one command a line.
#pragma once

#include <string>
#include <vector>

namespace host {

/// One command of a script.
struct ScriptLine {
    int number = 0;                 ///< of the line in the text, from 1
    std::string text;               ///< the line without blanks around it
    std::vector<std::string> words; ///< the command and its arguments, quotes removed; never empty
};

/// Why a line is no command.
struct ScriptError {
    int line;
    std::string reason;
};

/// A script that was read. Blank lines and what follows a word that begins with # are left out. A file name
/// or text with blanks stands in double quotes; commands whose last argument is a text take the rest of the
/// line as it is.
class Script {
public:
    /// Reads UTF-8 text. Every line is checked: that the command exists, has the right arguments, and that
    /// its expressions use only values that exist or that an earlier `let` makes.
    explicit Script(const std::string& text);

    /// The commands in order. Only to be run when errors() is empty.
    const std::vector<ScriptLine>& lines() const { return lines_; }
    /// What is wrong, in the order of the lines.
    const std::vector<ScriptError>& errors() const { return errors_; }
    /// All commands with their arguments, one a line.
    static std::string help();

private:
    std::vector<ScriptLine> lines_;
    std::vector<ScriptError> errors_;
};

} // namespace host
