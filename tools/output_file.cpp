#include "tools/output_file.h"

#include "tools/standard_streams.h"
#include "tools/text.h"

#include "marvo/recording/input_file.h"

namespace dvrec {

namespace {

bool exists(const std::wstring& name) {
    return GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring freeNameBeside(const std::wstring& name) {
    std::wstring candidate = name + L".part";
    for (int number = 2; exists(candidate); ++number) {
        candidate = name + L".part" + std::to_wstring(number);
    }
    return candidate;
}

} // namespace

Failure cannotWrite(const std::wstring& name, const std::string& reason) {
    return {ExitStatus::cannotWrite, quoted(name) + " cannot be written: " + reason + "."};
}

OutputFile::OutputFile(const std::wstring& name, bool replace, const std::wstring& source)
    : name_(name), replace_(replace) {
    if (isPipe(name)) {
        temporary_ = name;
        published_ = true;
        return;
    }
    if (recording::InputFile::areSame(source.c_str(), name.c_str())) {
        throw cannotWrite(name, "it is the recording that is read; name another file");
    }
    if (exists(name) && (GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw cannotWrite(name, "it is a folder; name a file in it");
    }
    if (exists(name) && !replace) {
        throw cannotWrite(name, "it exists; name another file, or replace it with --force");
    }
    temporary_ = freeNameBeside(name);
}

OutputFile::~OutputFile() {
    if (!published_) {
        DeleteFileW(temporary_.c_str());
    }
}

void OutputFile::publish() {
    if (!isPipe(name_) &&
        !MoveFileExW(temporary_.c_str(), name_.c_str(), replace_ ? MOVEFILE_REPLACE_EXISTING : 0)) {
        throw cannotWrite(name_, systemMessage(GetLastError()));
    }
    published_ = true;
}

} // namespace dvrec
