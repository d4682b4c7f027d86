#include "tools/avi_recording.h"

#include "tools/failure.h"
#include "tools/text.h"

namespace dvrec {

namespace {

/// The engine's last error as the end of a sentence: without a line end or a full stop.
std::string reason(const FileIOAVI& avi) {
    std::wstring text = avi.lastError();
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'.')) {
        text.pop_back();
    }
    return utf8(text);
}

} // namespace

AviRecording::AviRecording(InputFile source, FileIOAVI::Trust trust) : Recording(std::move(source)) {
    if (avi_.open(file().name().c_str(), trust) != FileIOAVI::Ok) {
        throw Failure{ExitStatus::cannotRead, quoted(file().name()) +
                                                  " cannot be read as an AVI file: " + reason(avi_) +
                                                  ". 'dvrec repair' saves the frames that are in it."};
    }
}

Recording::Place AviRecording::place(unsigned long frame) const {
    FileIOAVI::FramePosition position;
    avi_.framePosition(frame, position);
    return {position.offset + Slot::headerBytes, position.size};
}

bool AviRecording::read(unsigned long frame, Slot& slot, std::string& fault) {
    slot.prepare(place(frame).size);
    const std::span<unsigned char> all = slot.all();
    if (avi_.readFrame(reinterpret_cast<char*>(all.data()), static_cast<unsigned long>(all.size()), frame) ==
        FileIOAVI::Ok) {
        return true;
    }
    fault = "cannot be read: " + reason(avi_);
    return false;
}

} // namespace dvrec
