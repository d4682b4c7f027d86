#include "app/window/file_dialogs.h"

#include "app/clip_file.h"
#include "app/window/exporter.h"

#include <commdlg.h>
#include <shlobj.h>

namespace app {

namespace {

constexpr DWORD mostPath = 32768;

OPENFILENAMEW dialog(HWND owner, std::wstring& file, const std::wstring& filter, const std::wstring& title) {
    file.resize(mostPath, L'\0');
    OPENFILENAMEW wanted = {};
    wanted.lStructSize = sizeof wanted;
    wanted.hwndOwner = owner;
    wanted.lpstrFilter = filter.c_str();
    wanted.lpstrFile = file.data();
    wanted.nMaxFile = mostPath;
    wanted.lpstrTitle = title.c_str();
    wanted.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_EXPLORER;
    return wanted;
}

} // namespace

std::optional<std::wstring> askForRecording(HWND owner, const std::wstring& folder, Language language) {
    const std::wstring title = text(Text::windowOpenTitle, language);
    const std::wstring filter = std::wstring(text(Text::windowRecordings, language)) + L'\0' +
                                L"*.avi;*.dv;*.raw" + L'\0' + text(Text::windowAllFiles, language) + L'\0' +
                                L"*.*" + L'\0';
    std::wstring file;
    OPENFILENAMEW wanted = dialog(owner, file, filter, title);
    wanted.lpstrInitialDir = folder.c_str();
    wanted.Flags |= OFN_FILEMUSTEXIST;
    return GetOpenFileNameW(&wanted) ? std::optional<std::wstring>(file.c_str()) : std::nullopt;
}

std::optional<std::wstring> askForExport(HWND owner, const std::wstring& clipName, Language language) {
    const std::wstring title = text(Text::windowExportTitle, language);
    const std::wstring filter = std::wstring(text(Text::windowExportAvi, language)) + L'\0' + L"*.avi" +
                                L'\0' + text(Text::windowExportDv, language) + L'\0' + L"*.dv" + L'\0' +
                                text(Text::windowExportPictures, language) + L'\0' + L"*" + L'\0';
    std::wstring file = ClipFile::fileWord(clipName);
    OPENFILENAMEW wanted = dialog(owner, file, filter, title);
    wanted.Flags |= OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST;
    if (!GetSaveFileNameW(&wanted)) {
        return std::nullopt;
    }
    std::wstring target = file.c_str();
    if (exportKindOf(target) == ExportKind::pictures && wanted.nFilterIndex < 3) {
        target += wanted.nFilterIndex == 1 ? L".avi" : L".dv";
    }
    return target;
}

std::optional<std::wstring> askForFolder(HWND owner, const std::wstring& title) {
    BROWSEINFOW wanted = {};
    wanted.hwndOwner = owner;
    wanted.lpszTitle = title.c_str();
    wanted.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    PIDLIST_ABSOLUTE chosen = SHBrowseForFolderW(&wanted);
    wchar_t path[MAX_PATH] = L"";
    const bool any = chosen != nullptr && SHGetPathFromIDListW(chosen, path);
    CoTaskMemFree(chosen);
    return any ? std::optional<std::wstring>(path) : std::nullopt;
}

} // namespace app
