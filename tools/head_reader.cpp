#include "tools/head_reader.h"

#include "marvo/dv/recorded_at.h"
#include "marvo/dv/time_code.h"

#include <algorithm>

namespace dvrec {

namespace {

bool hasAll(vdv::FrameBytes bytes) {
    const vdv::RecordedAt at = vdv::RecordedAt::read(bytes);
    return vdv::TimeCode::read(bytes) && at.date && at.time;
}

bool hasMore(vdv::FrameBytes more, vdv::FrameBytes less) {
    const vdv::RecordedAt at = vdv::RecordedAt::read(less);
    const vdv::RecordedAt further = vdv::RecordedAt::read(more);
    return vdv::TimeCode::read(more).has_value() != vdv::TimeCode::read(less).has_value() ||
           further.date.has_value() != at.date.has_value() || further.time.has_value() != at.time.has_value();
}

} // namespace

HeadReader::HeadReader(const recording::Reader& from) : from_(from), memory_(from.frameSize()) {
    // Frames are read further if the first one has something further behind.
    const vdv::FrameBytes first = whole(0);
    const vdv::FrameBytes start = first.first(std::min<size_t>(first.size(), vdv::frameHeadBytes));
    needed_ = !hasAll(start) && hasMore(first, start) ? memory_.size() : start.size();
}

vdv::FrameBytes HeadReader::read(unsigned long long frame, size_t bytes) {
    return vdv::FrameBytes(memory_).first(from_.readHead(frame, memory_.data(), bytes));
}

} // namespace dvrec
