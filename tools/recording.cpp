#include "tools/recording.h"

#include "tools/failure.h"
#include "tools/standard_streams.h"
#include "tools/text.h"

namespace dvrec {

namespace {

using recording::InputFile;

/// Opens the file and refuses one in which there is nothing.
InputFile openFile(const std::wstring& name) {
    InputFile file;
    if (!file.open(inputPath(name).c_str())) {
        const DWORD error = GetLastError();
        const DWORD attributes = GetFileAttributesW(name.c_str());
        const bool folder =
            attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        throw Failure{ExitStatus::cannotRead,
                      quoted(name) + " cannot be opened: " +
                          (folder
                               ? std::string("it is a folder; name the recording in it.")
                               : systemMessage(error) + ". Is the name right, and may you read the file?")};
    }
    if (file.size() == 0) {
        throw Failure{ExitStatus::cannotRead, quoted(name) + " is empty: nothing was recorded into it."};
    }
    return file;
}

[[noreturn]] void refuseUnknown(const std::wstring& name, const char* hint) {
    std::string kinds;
    for (const recording::KindRow& row : recording::kinds()) {
        kinds += std::string(kinds.empty() ? "" : ", ") + row.description;
    }
    throw Failure{ExitStatus::cannotRead,
                  quoted(name) + " is no recording: it begins as none of these: " + kinds + ". " + hint};
}

} // namespace

const char* describe(recording::Kind kind) {
    return rowOf(kind).description;
}

std::unique_ptr<recording::Reader> openRecording(const std::wstring& name, unsigned long sector) {
    const InputFile file = openFile(name);
    const recording::KindRow* const row = rowOfContent(file);
    if (!row) {
        refuseUnknown(name, "If it is a damaged one, use 'dvrec repair'.");
    }
    std::wstring error;
    std::unique_ptr<recording::Reader> reader = row->open(inputPath(name).c_str(), {true, sector}, error);
    if (!reader) {
        throw Failure{ExitStatus::cannotRead, quoted(name) + ", by its start of the kind '" +
                                                  row->description + "', cannot be read: " + utf8(error) +
                                                  ". 'dvrec repair' saves the frames that are in it."};
    }
    return reader;
}

std::unique_ptr<recording::SearchedReader> openDamaged(const std::wstring& name,
                                                       const recording::Reader::ProgressCall& progress) {
    openFile(name);
    std::wstring error;
    std::unique_ptr<recording::SearchedReader> found =
        recording::SearchedReader::open(inputPath(name).c_str(), progress, error);
    if (!found) {
        throw Failure{ExitStatus::cannotRead, quoted(name) + " cannot be opened: " + utf8(error) + "."};
    }
    if (found->frames() == 0) {
        refuseUnknown(name, "No DV frame was found in it.");
    }
    return found;
}

const recording::KindRow& kindOfExport(const std::wstring& out) {
    const recording::KindRow* const row =
        isPipe(out) ? &rowOf(recording::Kind::stream) : recording::rowOfExtension(out.c_str());
    if (!row) {
        std::string extensions;
        for (const recording::KindRow& other : recording::kinds()) {
            const bool first = extensions.empty() || *other.extension == '\0';
            extensions += (first ? "" : " and ") + std::string(other.extension);
        }
        throw Failure{ExitStatus::usage, quoted(out) + " ends with none of " + extensions +
                                             ", so what it should become is not clear."};
    }
    return *row;
}

void allocate(recording::RecordBuffer& buffer, unsigned long bytes) {
    if (!buffer.allocate(bytes)) {
        throw Failure{ExitStatus::cannotRead, "There is not enough memory for a frame of " +
                                                  counted(bytes, "byte") +
                                                  "; the recording is probably damaged."};
    }
}

bool readFrame(recording::Reader& from, unsigned long long frame, recording::RecordBuffer& buffer,
               std::string& fault) {
    if (from.read(frame, buffer)) {
        return true;
    }
    const std::string reason = utf8(from.error());
    fault = "cannot be read" + (reason.empty() ? reason : ": " + reason);
    return false;
}

} // namespace dvrec
