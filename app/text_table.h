/// @file
/// The words of the application: MARVO_TEXT(id, English, German), included by app/text.h and app/text.cpp.
// No guard: it is read once for the ids and once for the words.

// Commands, for menus and help.
MARVO_TEXT(commandLive, L"Back to live", L"Zurück zu Live")
