/// @file
/// marvo-host: a window for instant replay, driven by hand or by a script.
#include "host/app_window.h"
#include "host/options.h"
#include "host/script.h"
#include "host/script_runner.h"
#include "host/text.h"
#include "host/transport.h"

#include <shellapi.h>

#include <cstdio>

namespace {

enum ExitStatus { allWell = 0, expectationFailed = 1, wrongUsage = 2, noWindow = 3 };

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

/// The directory part of a file name, with its last separator.
std::wstring directoryOf(const std::wstring& file) {
    const size_t separator = file.find_last_of(L"\\/:");
    return separator == std::wstring::npos ? std::wstring() : file.substr(0, separator + 1);
}

int runByHand(host::AppWindow& window, host::Transport& transport) {
    window.setTransport(&transport);
    if (!transport.init(std::nullopt)) {
        std::fprintf(stderr, "marvo-host: %s\n", transport.explanation().c_str());
        window.showMessage(transport.explanation());
    }
    window.dispatch(-1.0);
    window.setTransport(nullptr);
    return allWell;
}

int runScript(host::AppWindow& window, host::Transport& transport, const host::Script& script,
              const host::Options& options) {
    host::ScriptRunner runner(window, transport, directoryOf(options.report));
    window.setTransport(&transport);
    window.setPlayObserver([&](unsigned long frame) { runner.notePost(frame); });
    const bool held = runner.run(script);
    window.setPlayObserver({});
    window.setTransport(nullptr);
    transport.done();
    if (!options.report.empty() &&
        !host::writeFile(options.report, runner.report(host::utf8(options.script)))) {
        std::fprintf(stderr, "marvo-host: the report %s could not be written\n",
                     host::utf8(options.report).c_str());
        return expectationFailed;
    }
    return held ? allWell : expectationFailed;
}

/// Says on the standard error output what is wrong with a script. True when nothing is.
bool isSound(const host::Script& script, const std::string& name) {
    for (const host::ScriptError& error : script.errors()) {
        std::fprintf(stderr, "%s:%d: %s\n", name.c_str(), error.line, error.reason.c_str());
    }
    return script.errors().empty();
}

} // namespace

int main() {
    host::Options options;
    std::string text;
    switch (options.read(commandLine(), text)) {
    case host::Options::Outcome::help:
        std::printf("%s", text.c_str());
        return allWell;
    case host::Options::Outcome::wrong:
        std::fprintf(stderr, "marvo-host: %s\nmarvo-host --help tells more.\n", text.c_str());
        return wrongUsage;
    case host::Options::Outcome::run:
        break;
    }
    if (!options.script.empty() && !host::readFile(options.script, text)) {
        std::fprintf(stderr, "marvo-host: the script %s cannot be read\n",
                     host::utf8(options.script).c_str());
        return wrongUsage;
    }
    const host::Script script(text);
    if (!isSound(script, host::utf8(options.script))) {
        return wrongUsage;
    }
    host::AppWindow window;
    if (!window.create(options.width, options.height)) {
        std::fprintf(stderr, "marvo-host: no window can be made; is there a display?\n");
        return noWindow;
    }
    host::Transport transport(window.videoArea(), window.handle(), host::AppWindow::playInfoMessage);
    return options.script.empty() ? runByHand(window, transport)
                                  : runScript(window, transport, script, options);
}
