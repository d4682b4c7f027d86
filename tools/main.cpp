/// @file
/// dvrec: the command line for recordings.
#include "marvo/version.h"
#include "tools/commands.h"
#include "tools/interruption.h"
#include "tools/several_files.h"
#include "tools/text.h"

#include "marvo/core/platform.h"

#include <algorithm>
#include <cstdio>
#include <exception>

namespace {

bool asksForHelp(const std::wstring& word) {
    return word == L"--help" || word == L"-h" || word == L"help";
}

dvrec::ExitStatus run(std::vector<std::wstring> words) {
    using dvrec::Command;
    if (words.empty() || asksForHelp(words.front())) {
        std::fputs(dvrec::helpForAll().c_str(), words.empty() ? stderr : stdout);
        return words.empty() ? dvrec::ExitStatus::usage : dvrec::ExitStatus::fine;
    }
    if (words.front() == L"--version") {
        std::printf("dvrec %d.%d.%d\n", marvo::versionMajor, marvo::versionMinor, marvo::versionPatch);
        return dvrec::ExitStatus::fine;
    }
    const std::string name = dvrec::utf8(words.front());
    words.erase(words.begin());
    const std::vector<Command>& all = dvrec::commands();
    const auto command =
        std::find_if(all.begin(), all.end(), [&](const Command& known) { return known.name == name; });
    if (command == all.end()) {
        throw dvrec::Failure{dvrec::ExitStatus::usage,
                             "There is no command '" + name + "'. 'dvrec --help' lists them."};
    }
    try {
        const dvrec::Arguments arguments =
            dvrec::readArguments(words, command->options, command->leastFiles, command->mostFiles);
        if (!arguments.help) {
            return command->mostFiles == dvrec::anyNumber ? forEachFile(arguments, command->run)
                                                          : command->run(arguments);
        }
        std::fputs(helpFor(*command).c_str(), stdout);
        return dvrec::ExitStatus::fine;
    } catch (dvrec::Failure& failure) {
        if (failure.status == dvrec::ExitStatus::usage) {
            failure.sentence += " 'dvrec " + name + " --help' has its usage.";
        }
        throw;
    }
}

} // namespace

/// The runtime does not look for files that fit a pattern: it would take none for an ordinary name, and knows
/// no order.
extern "C" {
int _dowildcard = 0;
}

int wmain(int count, wchar_t** words) {
    SetConsoleOutputCP(CP_UTF8);
    dvrec::catchInterruptions();
    try {
        return static_cast<int>(run({words + 1, words + std::max(count, 1)}));
    } catch (const dvrec::Failure& failure) {
        std::fprintf(stderr, "dvrec: %s\n", failure.sentence.c_str());
        return static_cast<int>(failure.status);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dvrec: There is not enough memory, or something unforeseen happened (%s).\n",
                     error.what());
        return static_cast<int>(dvrec::ExitStatus::cannotRead);
    }
}
