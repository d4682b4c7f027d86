#include "app/key_map.h"

#include <algorithm>
#include <array>

namespace app {

namespace {

struct NamedKey {
    const wchar_t* name;
    int code;
};

// The system's virtual key codes, which never change; letters, digits and F keys are reckoned.
constexpr NamedKey namedKeys[] = {
    {L"Backspace", 0x08}, {L"Tab", 0x09},       {L"Enter", 0x0d},    {L"Pause", 0x13},
    {L"Escape", 0x1b},    {L"Space", 0x20},     {L"PageUp", 0x21},   {L"PageDown", 0x22},
    {L"End", 0x23},       {L"Home", 0x24},      {L"Left", 0x25},     {L"Up", 0x26},
    {L"Right", 0x27},     {L"Down", 0x28},      {L"Insert", 0x2d},   {L"Delete", 0x2e},
    {L"NumTimes", 0x6a},  {L"NumPlus", 0x6b},   {L"NumMinus", 0x6d}, {L"NumPoint", 0x6e},
    {L"NumSlash", 0x6f},  {L"Semicolon", 0xba}, {L"Plus", 0xbb},     {L"Comma", 0xbc},
    {L"Minus", 0xbd},     {L"Point", 0xbe},     {L"Slash", 0xbf},    {L"Backquote", 0xc0},
    {L"Quote", 0xde},
};

constexpr int firstNumKey = 0x60;
constexpr int firstFKey = 0x70;
constexpr int fKeys = 24;

std::wstring lower(std::wstring_view text) {
    std::wstring result(text);
    for (wchar_t& letter : result) {
        letter = letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter + 0x20) : letter;
    }
    return result;
}

bool isPlainKey(int code) {
    return (code >= L'A' && code <= L'Z') || (code >= L'0' && code <= L'9');
}

/// The name of a key without modifiers; empty for one that has none.
std::wstring nameOfCode(int code) {
    if (isPlainKey(code)) {
        return std::wstring(1, static_cast<wchar_t>(code));
    }
    if (code >= firstNumKey && code < firstNumKey + 10) {
        return L"Num" + std::to_wstring(code - firstNumKey);
    }
    if (code >= firstFKey && code < firstFKey + fKeys) {
        return L"F" + std::to_wstring(code - firstFKey + 1);
    }
    const auto* found = std::find_if(std::begin(namedKeys), std::end(namedKeys),
                                     [code](const NamedKey& key) { return key.code == code; });
    return found == std::end(namedKeys) ? L"" : found->name;
}

int codeOf(std::wstring_view name) {
    const std::wstring wanted = lower(name);
    for (int code = 1; code < 0x100; ++code) {
        const std::wstring known = nameOfCode(code);
        if (!known.empty() && lower(known) == wanted) {
            return code;
        }
    }
    return 0;
}

std::vector<std::wstring_view> words(std::wstring_view text) {
    std::vector<std::wstring_view> result;
    for (std::size_t at = 0; (at = text.find_first_not_of(L" \t", at)) != text.npos;) {
        const std::size_t end = std::min(text.find_first_of(L" \t", at), text.size());
        result.push_back(text.substr(at, end - at));
        at = end;
    }
    return result;
}

} // namespace

std::optional<Key> Key::read(std::wstring_view text) {
    Key key;
    for (std::size_t plus = 0; (plus = text.find(L'+')) != text.npos; text.remove_prefix(plus + 1)) {
        const std::wstring modifier = lower(text.substr(0, plus));
        bool Key::*const held = modifier == L"ctrl"    ? &Key::control
                                : modifier == L"shift" ? &Key::shift
                                : modifier == L"alt"   ? &Key::alt
                                                       : nullptr;
        if (!held || key.*held) {
            return std::nullopt;
        }
        key.*held = true;
    }
    key.code = codeOf(text);
    return key.code == 0 ? std::nullopt : std::optional(key);
}

std::wstring Key::text() const {
    return std::wstring(control ? L"Ctrl+" : L"") + (alt ? L"Alt+" : L"") + (shift ? L"Shift+" : L"") +
           nameOfCode(code);
}

KeyMap::KeyMap() {
    for (const CommandInfo& row : commands()) {
        for (const std::wstring_view word : words(row.keys)) {
            if (const std::optional<Key> key = Key::read(word)) {
                bindings_.push_back({*key, row.command});
            }
        }
    }
}

std::optional<Command> KeyMap::find(Key key, bool repeated) const {
    for (const Binding& binding : bindings_) {
        if (binding.key == key && (!repeated || commandInfo(binding.command).repeats)) {
            return binding.command;
        }
    }
    return std::nullopt;
}

std::vector<Key> KeyMap::keys(Command command) const {
    std::vector<Key> result;
    for (const Binding& binding : bindings_) {
        if (binding.command == command) {
            result.push_back(binding.key);
        }
    }
    return result;
}

std::wstring KeyMap::text(Command command) const {
    std::wstring result;
    for (const Key& key : keys(command)) {
        result += (result.empty() ? L"" : L" ") + key.text();
    }
    return result;
}

bool KeyMap::set(Command command, std::wstring_view keys, Language language, std::wstring& why) {
    std::vector<Binding> fresh;
    for (const std::wstring_view word : words(keys)) {
        const std::optional<Key> key = Key::read(word);
        if (!key) {
            why = app::text(Text::keyUnknown, language, {std::wstring(word)});
            return false;
        }
        const auto taken = std::find_if(bindings_.begin(), bindings_.end(), [&](const Binding& binding) {
            return binding.key == *key && binding.command != command;
        });
        if (taken != bindings_.end()) {
            why = app::text(Text::keyTaken, language,
                            {key->text(), app::text(commandInfo(taken->command).text, language)});
            return false;
        }
        const bool twice = std::any_of(fresh.begin(), fresh.end(),
                                       [&](const Binding& binding) { return binding.key == *key; });
        if (!twice) {
            fresh.push_back({*key, command});
        }
    }
    std::erase_if(bindings_, [command](const Binding& binding) { return binding.command == command; });
    bindings_.insert(bindings_.end(), fresh.begin(), fresh.end());
    return true;
}

bool KeyMap::changed(Command command) const {
    return keys(command) != KeyMap().keys(command);
}

} // namespace app
