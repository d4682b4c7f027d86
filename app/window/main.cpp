/// @file
/// marvo-replay: instant replay for an operator.
#include "app/text.h"
#include "app/window/replay_window.h"
#include "app/window/start_options.h"

#include <shellapi.h>

#include <exception>

namespace {

enum ExitStatus { allWell = 0, failed = 1, wrongUsage = 2, noWindow = 3 };

const char usage[] = R"(marvo-replay [--full-screen] [FILE]
marvo-replay --help | --version

Live video, recording and instant replay from a DV camera. FILE is an old
recording (raw, AVI or .dv) to be watched.

Settings are in marvo-replay.ini in the current directory; the dialog writes
them. Recordings go to the folder "recordings" there, or to another one as set.

Exit status: 0 all went well, 1 the program had to end, 2 wrong command line,
3 no window could be made.
)";

std::vector<std::wstring> commandLine() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> list;
    for (int i = 1; arguments != nullptr && i < count; ++i) {
        list.emplace_back(arguments[i]);
    }
    LocalFree(arguments);
    return list;
}

/// Writes to the standard output or error output that the program was given, else to the console that it was
/// started from, else into a box.
void print(const std::string& text, bool error) {
    const DWORD which = error ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE;
    HANDLE output = GetStdHandle(which);
    DWORD written = 0;
    const DWORD size = static_cast<DWORD>(text.size());
    if (output != nullptr && output != INVALID_HANDLE_VALUE &&
        WriteFile(output, text.data(), size, &written, nullptr)) {
        return;
    }
    // The console's own line goes on behind the program's name.
    const std::string lines = "\r\n" + text;
    if (AttachConsole(ATTACH_PARENT_PROCESS)) {
        const vcore::handle console(
            CreateFileW(L"CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        if (console &&
            WriteFile(console.get(), lines.data(), static_cast<DWORD>(lines.size()), &written, nullptr)) {
            return;
        }
    }
    MessageBoxW(nullptr, app::wide(text).c_str(), L"Marvo replay", error ? MB_ICONERROR : MB_ICONINFORMATION);
}

std::string versionText() {
    return "marvo-replay " + std::to_string(marvo::versionMajor) + "." + std::to_string(marvo::versionMinor) +
           "." + std::to_string(marvo::versionPatch) + "\n";
}

int runWindow(const app::StartOptions& options) {
    app::ReplayWindow window;
    if (!window.open(options.files, options.fullScreen)) {
        print("marvo-replay: no window can be made; is there a display?\n", true);
        return noWindow;
    }
    window.run();
    return allWell;
}

} // namespace

int main() {
    const app::StartOptions options = app::StartOptions::read(commandLine());
    if (!options.unknown.empty() || options.files.size() > 1) {
        const std::string reason =
            options.unknown.empty() ? "more than one FILE" : "unknown option " + app::utf8(options.unknown);
        print("marvo-replay: " + reason + "\nmarvo-replay --help tells more.\n", true);
        return wrongUsage;
    }
    if (options.help || options.version) {
        print(options.help ? usage : versionText(), false);
        return allWell;
    }
    const bool com = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    int status = failed;
    try {
        status = runWindow(options);
    } catch (const std::exception& error) {
        print(std::string("marvo-replay: ") + error.what() + "\n", true);
    }
    if (com) {
        CoUninitialize();
    }
    return status;
}
