#include "marvo/recording/avi_file_reader.h"

#include "marvo/avi/avi_inspector.h"
#include "marvo/avi/avi_reader.h"
#include "marvo/core/text.h"

#include <algorithm>
#include <cstring>

namespace recording {

namespace {

/// The last error as a part of a sentence.
std::wstring reasonOf(const FileIOAVI& avi) {
    std::wstring text = avi.lastError();
    while (!text.empty() && (text.back() == L'.' || text.back() <= L' ')) {
        text.pop_back();
    }
    return text;
}

/// Where frame `frame` of an open file stands; false when there is no such frame.
template <class Avi>
bool placeOf(const Avi& avi, unsigned long long frame, Reader::Place& place) {
    const auto number = static_cast<unsigned long>(frame);
    FileIOAVI::FramePosition position;
    if (number != frame || !avi.framePosition(number, position)) {
        return false;
    }
    place = {position.offset + headerBytes, position.size};
    return true;
}

std::string utf8(const vcore::str& text) {
    const wchar_t* wide = text.oleStr();
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(bytes, 1)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow.data(), bytes, nullptr, nullptr);
    narrow.pop_back();
    return narrow;
}

} // namespace

std::unique_ptr<Reader> AviFileReader::open(const wchar_t* name, const OpenOptions&, std::wstring& error) {
    std::unique_ptr<AviFileReader> reader(new AviFileReader(name));
    if (reader->avi_.open(name) != FileIOAVI::Ok) {
        error = reasonOf(reader->avi_);
        return nullptr;
    }
    return reader;
}

bool AviFileReader::find(const wchar_t* name, FoundFrames& found, const ProgressCall& progress) {
    AviReader avi;
    AVI_ODMLFileInfo info;
    const auto tell = [&progress](unsigned long long done, unsigned long long all) { progress(done, all); };
    if (avi.open(name, FileIOAVI::Trust::Nothing, info, tell) != FileIOAVI::Ok) {
        return false;
    }
    found.promised = info.headerTotalFrames;
    Place place;
    for (unsigned long frame = 0; placeOf(avi, frame, place); ++frame) {
        found.places.push_back(place);
    }
    for (const unsigned long long offset : avi.broken()) {
        found.broken.push_back(offset + headerBytes);
    }
    return true;
}

bool AviFileReader::isAviStart(const unsigned char* head, std::size_t bytes) {
    return bytes >= 12 && std::memcmp(head, "RIFF", 4) == 0 && std::memcmp(head + 8, "AVI ", 4) == 0;
}

bool AviFileReader::isFrameHeader(const unsigned char* head, std::size_t bytes) {
    return bytes >= headerBytes && head[2] == 'd' && (head[3] == 'c' || head[3] == 'b');
}

bool AviFileReader::place(unsigned long long frame, Place& place) const {
    return placeOf(avi_, frame, place);
}

bool AviFileReader::read(unsigned long long frame, RecordBuffer& buffer) {
    const auto number = static_cast<unsigned long>(std::min<unsigned long long>(frame, 0xFFFFFFFF));
    FileIOAVI::FramePosition position;
    return !abandoned_ &&
           avi_.readFrame(reinterpret_cast<char*>(buffer.data()), buffer.bytes(), number) == FileIOAVI::Ok &&
           avi_.framePosition(number, position) && buffer.setFrameBytes(position.size);
}

std::wstring AviFileReader::error() const {
    return abandoned_ ? L"reading was given up" : reasonOf(avi_);
}

unsigned long AviFileReader::systemError() const {
    return abandoned_ ? ERROR_OPERATION_ABORTED : avi_.systemError();
}

std::string AviFileReader::whatIsMissing() const {
    const AVI_ODMLFileInfo& info = avi_.info();
    if (info.walkedFrames > 0) {
        return vcore::counted(info.walkedFrames, "frame") + " in no index";
    }
    return info.headerTotalFrames > info.totalFrames
               ? vcore::format("its header promises %lu frames", info.headerTotalFrames)
               : std::string();
}

std::vector<Reader::Fact> AviFileReader::facts() const {
    const AVI_ODMLFileInfo& info = avi_.info();
    Place first;
    Place second;
    const bool two = place(0, first) && place(1, second);
    return {{"slotSize", "from frame to frame", two ? second.offset - first.offset : avi_.slotSize()},
            {"pieces", "RIFF pieces", info.pieces},
            {"standardIndexes", "standard indexes", info.indexPositions.size()},
            {"legacyEntries", "legacy index entries", info.legacyEntries},
            {"unindexedFrames", "frames in no index", info.walkedFrames},
            {"streams", "streams", info.streams},
            {"audioStreams", "sound streams", info.audioStreams}};
}

unsigned long long AviFileReader::check(const FaultCall& fault, const ProgressCall& progress,
                                        unsigned long mostFaults) const {
    AviInspector inspector;
    AviInspector::Options options;
    options.frames = false;
    options.maxFaults = mostFaults;
    options.progress = progress;
    inspector.run(name().c_str(), options);
    for (const AviInspector::Fault& found : inspector.faults()) {
        fault(found.offset, utf8(found.text));
    }
    return inspector.faultCount() - inspector.faults().size();
}

} // namespace recording
