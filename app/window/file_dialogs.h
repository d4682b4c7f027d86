/// @file
/// The system's dialogs for files and folders.
#pragma once

#include "app/text.h"
#include "marvo.h"

#include <optional>
#include <string>

namespace app {

/// Asks for a recording to open, beginning in `folder`; nothing when the operator thinks better of it.
std::optional<std::wstring> askForRecording(HWND owner, const std::wstring& folder, Language language);

/// Asks what an exported clip is to be called, in which form, and whether a file that is there may go; the
/// name's extension says the form. Nothing as above.
std::optional<std::wstring> askForExport(HWND owner, const std::wstring& clipName, Language language);

/// Asks for a folder; nothing as above.
std::optional<std::wstring> askForFolder(HWND owner, const std::wstring& title);

} // namespace app
