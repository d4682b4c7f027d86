#include "app/window/start_options.h"

namespace app {

StartOptions StartOptions::read(const std::vector<std::wstring>& words) {
    StartOptions options;
    bool onlyFiles = false;
    for (const std::wstring& word : words) {
        if (onlyFiles || word.empty() || word[0] != L'-') {
            options.files.push_back(word);
        } else if (word == L"--") {
            onlyFiles = true;
        } else if (word == L"--help" || word == L"-h") {
            options.help = true;
        } else if (word == L"--version") {
            options.version = true;
        } else if (word == L"--full-screen") {
            options.fullScreen = true;
        } else if (options.unknown.empty()) {
            options.unknown = word;
        }
    }
    return options;
}

} // namespace app
