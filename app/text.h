/// @file
/// Every text that an operator reads, in English and German.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// The languages of the application.
enum class Language { english, german };

/// Every text; the words are in app/text_table.h.
enum class Text {
#define MARVO_TEXT(id, english, german) id,
#include "app/text_table.h"
#undef MARVO_TEXT
    count ///< how many there are; no text
};

/// The text as it stands in the table, with its places {0}, {1} and so on.
const wchar_t* text(Text id, Language language);

/// The text with its places filled.
std::wstring text(Text id, Language language, const std::vector<std::wstring>& values);

/// UTF-8 and back; wrong bytes become replacement characters.
std::string utf8(const std::wstring& text);
std::wstring wide(const std::string& text);

/// "4.2 s" under a minute, "3:07 min" under an hour, "1:02:45 h" beyond; with the decimal sign of the
/// language.
std::wstring durationText(std::int64_t length_ms, Language language);
/// "13:45:07.480" of a time of day (see Moment), or "13:45:07".
std::wstring timeOfDayText(std::int64_t timeOfDay_ms, bool withFraction);
/// "0.33" or "0,33", "-2".
std::wstring numberText(double value, Language language);
/// The first of several findings, and how many more there are.
std::wstring firstOf(const std::vector<std::wstring>& findings, Language language);
/// A number with a decimal point or comma; nothing when that is not all there is.
std::optional<double> numberOf(const std::wstring& text);

} // namespace app
