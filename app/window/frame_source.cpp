#include "app/window/frame_source.h"

#include <algorithm>

namespace app {

namespace {

constexpr size_t mostFiles = 3;

} // namespace

bool FrameSource::read(const FrameAddress& address, std::vector<unsigned char>& bytes) {
    if (readRing(address, bytes)) {
        return true;
    }
    dvRecording* recording = address.file.empty() ? nullptr : open(address.file);
    if (recording == nullptr) {
        return false;
    }
    if (address.frame >= recording->frames()) {
        recording->refresh();
    }
    bytes.resize(dvRecording::mostFrameBytes);
    unsigned long size = 0;
    const bool got = recording->read(address.frame, bytes.data(), dvRecording::mostFrameBytes, &size);
    bytes.resize(size);
    return got;
}

bool FrameSource::readRing(const FrameAddress& address, std::vector<unsigned char>& bytes) {
    dvFrameStore& store = dvFE.recFilter().store();
    const unsigned long size = dvFE.frameSize();
    if (size == 0 || !ringFrame_.init(size)) {
        return false;
    }
    const bool got = address.file.empty() ? store.get(&ringFrame_, address.frame)
                                          : store.get(&ringFrame_, address.frame, address.file.c_str());
    if (got) {
        bytes.assign(ringFrame_.data(), ringFrame_.data() + size);
    }
    return got;
}

dvRecording* FrameSource::open(const std::wstring& name) {
    const auto known = std::find_if(files_.begin(), files_.end(),
                                    [&](const std::unique_ptr<File>& file) { return file->name == name; });
    if (known != files_.end()) {
        std::rotate(files_.begin(), known, known + 1);
        return &files_.front()->recording;
    }
    auto file = std::make_unique<File>();
    file->name = name;
    if (!file->recording.open(name.c_str())) {
        return nullptr;
    }
    files_.insert(files_.begin(), std::move(file));
    files_.resize(std::min(files_.size(), mostFiles));
    return &files_.front()->recording;
}

} // namespace app
