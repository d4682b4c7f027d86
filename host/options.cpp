#include "host/options.h"

#include "host/script.h"
#include "host/text.h"

#include <CLI/CLI.hpp>

#include <cstdio>

namespace host {

namespace {

constexpr int largestSide = 8192;

bool readSize(const std::string& text, int& width, int& height) {
    char extra = 0;
    return std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &extra) == 2 && width >= 1 && height >= 1 &&
           width <= largestSide && height <= largestSide;
}

} // namespace

Options::Outcome Options::read(const std::vector<std::wstring>& arguments, std::string& text) {
    CLI::App app("Live video, recording and instant replay in a window.", "marvo-host");
    app.allow_windows_style_options(false);
    app.footer("Script commands:\n" + Script::help());
    const auto into = [](std::wstring& target) {
        return [&target](const std::string& value) { target = wide(value); };
    };
    CLI::Option* const scripted = app.add_option_function<std::string>(
        "--script", into(script), "runs the commands of this file instead of being driven by hand");
    CLI::Option* const reported = app.add_option_function<std::string>(
        "--report", into(report), "writes what became of the script's commands to this file, as JSON");
    scripted->type_name("FILE");
    reported->type_name("FILE")->needs(scripted);
    app.add_option_function<std::string>(
           "--size",
           [this](const std::string& value) {
               if (!readSize(value, width, height)) {
                   throw CLI::ValidationError("--size", "needs WIDTHxHEIGHT in pixels, not " + value);
               }
           },
           "the video's size in pixels, 720x576 when not given")
        ->type_name("WIDTHxHEIGHT");
    std::vector<std::string> words; // the last one first
    for (auto word = arguments.rbegin(); word != arguments.rend(); ++word) {
        words.push_back(utf8(*word));
    }
    try {
        app.parse(words);
        return Outcome::run;
    } catch (const CLI::CallForHelp&) {
        text = app.help();
        return Outcome::help;
    } catch (const CLI::ParseError& error) {
        text = error.what();
        return Outcome::wrong;
    }
}

} // namespace host
