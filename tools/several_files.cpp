#include "tools/several_files.h"

#include "tools/json_writer.h"
#include "tools/text.h"

#include "marvo/core/platform.h"

#include <algorithm>
#include <cstdio>

namespace dvrec {

namespace {

bool isPattern(const std::wstring& name) {
    return shown(name).find_first_of(L"*?") != std::wstring::npos;
}

/// The files that a pattern fits, in the order of their names; the folder in front of it is no pattern.
std::vector<std::wstring> filesLike(const std::wstring& pattern) {
    std::vector<std::wstring> names;
    const std::wstring folder = pattern.substr(0, pattern.find_last_of(L"/\\:") + 1);
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(openable(pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            names.push_back(folder + found.cFileName);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

void report(const Failure& failure, const std::wstring& name, const Arguments& arguments) {
    if (!arguments.json) {
        std::fflush(stdout);
        std::fprintf(stderr, "dvrec: %s\n", failure.sentence.c_str());
        return;
    }
    JsonWriter json(true);
    json.beginObject();
    json.add("file", utf8Name(name));
    json.add("error", failure.sentence);
    json.add("status", static_cast<unsigned long>(failure.status));
    json.end();
    std::fputs(json.text().c_str(), stdout);
}

} // namespace

ExitStatus forEachFile(const Arguments& arguments, ExitStatus (*run)(const Arguments& arguments)) {
    if (arguments.files.size() == 1 && !isPattern(arguments.files[0])) {
        return run(arguments);
    }
    ExitStatus worst = ExitStatus::fine;
    const auto runOne = [&](const std::wstring& name) {
        Arguments one = arguments;
        one.files = {openable(name)};
        one.lines = true;
        worst = std::max(worst, run(one));
    };
    for (const std::wstring& given : arguments.files) {
        const std::vector<std::wstring> names =
            isPattern(given) ? filesLike(given) : std::vector<std::wstring>{given};
        for (const std::wstring& name : names.empty() ? std::vector<std::wstring>{given} : names) {
            try {
                if (names.empty()) {
                    throw Failure{ExitStatus::cannotRead, "No file fits " + quoted(given) + "."};
                }
                runOne(name);
            } catch (const Failure& failure) {
                if (failure.status == ExitStatus::interrupted) {
                    throw;
                }
                report(failure, name, arguments);
                worst = std::max(worst, failure.status);
            }
        }
    }
    return worst;
}

} // namespace dvrec
