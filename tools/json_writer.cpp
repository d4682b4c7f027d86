#include "tools/json_writer.h"

#include "tools/text.h"

namespace dvrec {

void JsonWriter::newLine() {
    if (!oneLine_) {
        text_ += '\n';
        text_.append(closings_.size() * 2, ' ');
    }
}

void JsonWriter::next(std::string_view name) {
    if (!closings_.empty()) {
        text_ += first_ ? "" : oneLine_ ? ", " : ",";
        newLine();
    }
    first_ = false;
    if (!name.empty()) {
        quote(name);
        text_ += ": ";
    }
}

void JsonWriter::begin(std::string_view name, char opening, char closing) {
    next(name);
    text_ += opening;
    closings_ += closing;
    first_ = true;
}

void JsonWriter::end() {
    const char closing = closings_.back();
    closings_.pop_back();
    if (!first_) {
        newLine();
    }
    text_ += closing;
    first_ = false;
    if (closings_.empty()) {
        text_ += '\n';
    }
}

void JsonWriter::quote(std::string_view text) {
    text_ += '"';
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            text_ += '\\';
            text_ += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            text_ += format("\\u%04x", static_cast<unsigned>(character));
        } else {
            text_ += character;
        }
    }
    text_ += '"';
}

void JsonWriter::add(std::string_view name, std::string_view text) {
    next(name);
    quote(text);
}

void JsonWriter::add(std::string_view name, unsigned long long number) {
    next(name);
    text_ += std::to_string(number);
}

void JsonWriter::add(std::string_view name, double number) {
    next(name);
    text_ += format("%.10g", number);
}

void JsonWriter::add(std::string_view name, bool value) {
    next(name);
    text_ += value ? "true" : "false";
}

} // namespace dvrec
