#include "tools/output_file.h"

#include "tools/text.h"

#include "marvo/core/platform.h"

namespace dvrec {

Failure cannotWrite(const std::wstring& name, const std::string& reason) {
    return {ExitStatus::cannotWrite, quoted(name) + " cannot be written: " + reason + "."};
}

OutputFile::OutputFile(const std::wstring& name, bool replace, const std::wstring& source)
    : file_(name, replace, source) {
    using Refusal = recording::PartFile::Refusal;
    switch (file_.refusal()) {
    case Refusal::source:
        throw cannotWrite(name, "it is the recording that is read; name another file");
    case Refusal::folder:
        throw cannotWrite(name, "it is a folder; name a file in it");
    case Refusal::exists:
        throw cannotWrite(name, "it exists; name another file, or replace it with --force");
    default:
        break;
    }
}

void OutputFile::publish() {
    if (!file_.publish()) {
        throw cannotWrite(name(), systemMessage(GetLastError()));
    }
}

} // namespace dvrec
