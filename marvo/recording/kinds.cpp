#include "marvo/recording/kinds.h"

#include "marvo/core/disk_file.h"
#include "marvo/core/str.h"
#include "marvo/core/text.h"
#include "marvo/recording/avi_file_reader.h"
#include "marvo/recording/avi_file_writer.h"
#include "marvo/recording/raw_reader.h"
#include "marvo/recording/raw_writer.h"
#include "marvo/recording/recordings.h"
#include "marvo/recording/stream_reader.h"
#include "marvo/recording/stream_writer.h"

#include <algorithm>

namespace recording {

namespace {

bool namesAvi(const wchar_t* name) {
    vcore::str lower(name);
    lower.lower();
    return lower.findStr(L".avi", 0) > 0;
}

constexpr wchar_t deviceReason[] = L"it is the name of a device, not of a file";

bool namesNoAvi(const wchar_t* name) {
    return !namesAvi(name);
}

} // namespace

std::span<const KindRow> kinds() {
    static constexpr KindRow rows[] = {
        {Kind::avi, "avi", "AVI file", ".avi", namesAvi, AviFileReader::isAviStart, AviFileReader::open,
         AviFileWriter::create, AviFileReader::find, AviFileReader::isFrameHeader, 0, false},
        {Kind::raw, "raw", "raw recording", "", namesNoAvi, RawReader::isRecordStart, RawReader::open,
         RawWriter::create, nullptr, RawReader::isRecordStart, headerBytes, true},
        {Kind::stream, "stream", "DV stream", ".dv", namesNoAvi, StreamReader::isStreamStart,
         StreamReader::open, StreamWriter::create, nullptr, nullptr, 0, true},
    };
    return rows;
}

const KindRow& rowOf(Kind kind) {
    return *std::find_if(kinds().begin(), kinds().end(),
                         [kind](const KindRow& row) { return row.kind == kind; });
}

const KindRow& rowOfName(const wchar_t* name) {
    return *std::find_if(kinds().begin(), kinds().end(),
                         [name](const KindRow& row) { return row.isMeantBy(name); });
}

const KindRow* rowOfContent(const InputFile& file) {
    unsigned char head[headBytes];
    const std::size_t got = file.read(0, head, sizeof head);
    const auto row = std::find_if(kinds().begin(), kinds().end(),
                                  [&](const KindRow& kind) { return kind.startsSo(head, got); });
    return row != kinds().end() ? &*row : nullptr;
}

const KindRow* rowOfExtension(const wchar_t* name) {
    vcore::str lower(name);
    lower.lower();
    const std::wstring text = lower.oleStr();
    const auto row = std::find_if(kinds().begin(), kinds().end(), [&](const KindRow& kind) {
        const std::string extension = kind.extension;
        return !extension.empty() && text.ends_with(std::wstring(extension.begin(), extension.end()));
    });
    return row != kinds().end() ? &*row : nullptr;
}

Kind kindOfName(const wchar_t* name) {
    return rowOfName(name).kind;
}

std::unique_ptr<Reader> openReader(const wchar_t* name, std::wstring* error) {
    const bool device = vcore::namesDevice(name);
    std::wstring firstReason = device ? deviceReason : L"";
    for (const KindRow& row : kinds()) {
        std::wstring reason;
        if (!name || device || !row.isMeantBy(name)) {
            continue;
        }
        if (std::unique_ptr<Reader> reader = row.open(name, {}, reason)) {
            return reader;
        }
        firstReason = firstReason.empty() ? reason : firstReason;
    }
    if (error) {
        *error = firstReason;
    }
    return nullptr;
}

std::unique_ptr<Writer> createWriter(const wchar_t* name, unsigned long frameSize,
                                     long long timePerFrame_100ns, std::wstring* error) {
    std::wstring reason;
    std::unique_ptr<Writer> writer;
    if (vcore::namesDevice(name)) {
        reason = deviceReason;
    } else if (name && *name) {
        writer = rowOfName(name).create(name, frameSize, timePerFrame_100ns, reason);
    } else {
        reason = vcore::systemMessage(ERROR_INVALID_NAME);
    }
    if (!writer && error) {
        *error = reason;
    }
    return writer;
}

std::unique_ptr<Reader> openByContent(const wchar_t* name, std::wstring& predicate) {
    InputFile file;
    if (!file.open(name)) {
        predicate = L"cannot be opened: " + vcore::systemMessage(GetLastError());
        return nullptr;
    }
    std::wstring reason;
    std::unique_ptr<Reader> reader;
    const KindRow* const row = rowOfContent(file);
    if (file.size() == 0) {
        reader = openReader(name, &reason);
    } else if (row) {
        reader = row->open(name, {true, 0}, reason);
    } else {
        predicate = L"is no recording: it begins as no AVI file, raw recording or DV stream does";
        return nullptr;
    }
    if (!reader) {
        predicate = L"cannot be read: " + reason;
    }
    return reader;
}

} // namespace recording
