/// @file
/// Text that comes in and goes out: UTF-8 outside, the system's within.
#pragma once

#include "marvo_c.h"

#include <cstddef>
#include <string>

namespace flat {

/// The system's form of a text; null is refused, and what is no UTF-8 (MARVO_E_ARGUMENT). `what` names it in
/// the sentence.
std::wstring wideText(const char* text, const char* what);
/// The same, but null is an empty text.
std::wstring wideTextOrNone(const char* text, const char* what);
/// UTF-8 of a text; halves of characters become U+FFFD.
std::string utf8(const std::wstring& text);

/// UTF-8 of a text whose bytes are that already, or else the system's code page.
std::string asUtf8(const std::string& text);

/// How many of the `length` bytes of a UTF-8 text fit into `capacity` bytes with a zero, cut between
/// characters; `capacity` is not 0.
std::size_t fittingLength(const char* text, std::size_t length, std::size_t capacity);
/// Copies as much of a text as fits, and a zero.
void putText(char* to, std::size_t capacity, const std::string& text);

/// Answers with a text: into a buffer of `capacity` bytes (may be null), the bytes needed into `needed` (may
/// be null). Throws MARVO_E_BUFFER when it does not fit.
void answer(const std::string& text, char* buffer, marvo_u32 capacity, marvo_u32* needed);

} // namespace flat
