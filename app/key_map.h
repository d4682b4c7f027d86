/// @file
/// Which key triggers which command.
#pragma once

#include "app/command.h"
#include "app/text.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace app {

/// A key with its modifiers.
struct Key {
    int code = 0; ///< the system's virtual key code
    bool control = false;
    bool shift = false;
    bool alt = false;

    bool operator==(const Key&) const = default;
    /// Reads "Ctrl+Shift+Left" in any letter case; nothing for anything else.
    static std::optional<Key> read(std::wstring_view text);
    /// The form that `read` takes.
    std::wstring text() const;
};

/// The keys of all commands. A key belongs to one command at most, and its modifiers count: Ctrl+R is not R.
class KeyMap {
public:
    /// The default keys.
    KeyMap();

    /// The command of a key that went down; none for a key without one, and for the repetition of a held key
    /// unless its command is a step.
    std::optional<Command> find(Key key, bool repeated) const;
    /// The keys of a command.
    std::vector<Key> keys(Command command) const;
    /// The keys of a command as text, divided by blanks.
    std::wstring text(Command command) const;
    /// Gives a command these keys (as `text` has them; empty: none) instead of its own. False, with the
    /// reason in `why`, when one is no key or belongs to another command; then nothing changes.
    bool set(Command command, std::wstring_view keys, Language language, std::wstring& why);
    /// Whether a command has other keys than by default.
    bool changed(Command command) const;

private:
    struct Binding {
        Key key;
        Command command;
    };
    std::vector<Binding> bindings_;
};

} // namespace app
