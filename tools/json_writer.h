/// @file
/// JSON for programs that read what a command found.
#pragma once

#include <string>
#include <string_view>

namespace dvrec {

/// Composes one JSON value, indented for reading or in one line. The calls follow the value's structure; an
/// object's members take their name with them, a list's elements go with an empty name.
class JsonWriter {
public:
    /// `oneLine`: as one of several values that stand one to a line.
    explicit JsonWriter(bool oneLine = false) : oneLine_(oneLine) {}

    void beginObject(std::string_view name = {}) { begin(name, '{', '}'); }
    void beginList(std::string_view name) { begin(name, '[', ']'); }
    /// Ends the innermost object or list.
    void end();

    void add(std::string_view name, std::string_view text);
    void add(std::string_view name, const char* text) { add(name, std::string_view(text)); }
    void add(std::string_view name, unsigned long long number);
    void add(std::string_view name, unsigned long number) {
        add(name, static_cast<unsigned long long>(number));
    }
    void add(std::string_view name, double number);
    void add(std::string_view name, bool value);

    /// The text, once everything is ended.
    const std::string& text() const { return text_; }

private:
    void begin(std::string_view name, char opening, char closing);
    void newLine();
    void next(std::string_view name);
    void quote(std::string_view text);

    const bool oneLine_;
    std::string text_;
    std::string closings_;
    bool first_ = true;
};

} // namespace dvrec
