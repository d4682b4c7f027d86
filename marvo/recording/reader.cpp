#include "marvo/recording/reader.h"

#include <algorithm>

namespace recording {

const InputFile& Reader::file() const {
    if (!file_.opened()) {
        file_.open(name_.c_str());
    }
    return file_;
}

unsigned long long Reader::fileBytes() const {
    return file().size();
}

void Reader::describe(vvideo::dvMediaType& type) const {
    vvideo::clearMediaType(type);
    type.initVideoType(frameSize(), 0xFFFFFFFFul);
}

std::size_t Reader::readHead(unsigned long long frame, void* to, std::size_t bytes) const {
    Place where;
    return place(frame, where) ? file().read(where.offset, to, std::min<std::size_t>(bytes, where.size)) : 0;
}

Reader::End Reader::end() const {
    if (InputFile::isBeingWritten(name_.c_str())) {
        return {End::State::beingWritten, "it is being written at this moment"};
    }
    std::string missing = whatIsMissing();
    return {missing.empty() ? End::State::finished : End::State::cutOff, std::move(missing)};
}

} // namespace recording
