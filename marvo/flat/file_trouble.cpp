#include "marvo/flat/file_trouble.h"

#include "marvo/core/text.h"
#include "marvo/flat/failure.h"
#include "marvo/flat/text.h"
#include "marvo/recording/kinds.h"

#include <algorithm>

namespace flat {

std::string quoted(const std::wstring& name) {
    std::string text = "'";
    text += utf8(name);
    return text + "'";
}

void failOpening(const std::wstring& name, const std::wstring& predicate) {
    recording::InputFile file;
    fail(file.open(name.c_str()) ? MARVO_E_FORMAT : MARVO_E_FILE, quoted(name) + " " + utf8(predicate) + ".");
}

void explainFile(const std::wstring& name, unsigned long long from, unsigned long long to) {
    std::wstring predicate;
    const std::unique_ptr<recording::Reader> reader = recording::openByContent(name.c_str(), predicate);
    if (!reader) {
        failOpening(name, predicate);
    }
    if (std::min(from, to) >= reader->frames()) {
        fail(MARVO_E_RANGE, quoted(name) + vcore::format(" has no frames from %llu to %llu: there are %llu.",
                                                         from, to, reader->frames()));
    }
}

} // namespace flat
