#include "marvo/recording/part_file.h"

#include "marvo/core/windows.h"
#include "marvo/recording/input_file.h"

namespace recording {

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

PartFile::PartFile(std::wstring name, bool replace, const std::wstring& source)
    : name_(std::move(name)), replace_(replace), refusal_(findRefusal(source)) {
    if (refusal_ == Refusal::none) {
        temporary_ = freeNameBeside(name_);
    }
}

PartFile::~PartFile() {
    if (!published_ && !temporary_.empty()) {
        DeleteFileW(temporary_.c_str());
    }
}

PartFile::Refusal PartFile::findRefusal(const std::wstring& source) const {
    if (InputFile::areSame(source.c_str(), name_.c_str())) {
        return Refusal::source;
    }
    const DWORD attributes = GetFileAttributesW(name_.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return Refusal::none;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return Refusal::folder;
    }
    return replace_ ? Refusal::none : Refusal::exists;
}

bool PartFile::publish() {
    published_ = MoveFileExW(temporary_.c_str(), name_.c_str(), replace_ ? MOVEFILE_REPLACE_EXISTING : 0);
    return published_;
}

} // namespace recording
