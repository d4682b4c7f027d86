#include "tools/recording.h"

#include "tools/avi_recording.h"
#include "tools/failure.h"
#include "tools/raw_recording.h"
#include "tools/searched_recording.h"
#include "tools/stream_recording.h"
#include "tools/text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace dvrec {

namespace {

/// The kind of a file that begins with `head`; nothing when it begins as none of them.
std::optional<Kind> kindOf(FrameBytes head) {
    if (head.size() >= 12 && std::memcmp(head.data(), "RIFF", 4) == 0 &&
        std::memcmp(head.data() + 8, "AVI ", 4) == 0) {
        return Kind::avi;
    }
    if (isFrameStart(head)) {
        return Kind::stream;
    }
    return RawRecording::isRecordStart(head) ? std::optional(Kind::raw) : std::nullopt;
}

std::optional<Kind> kindOf(const InputFile& file) {
    std::array<unsigned char, 16> head;
    return kindOf(FrameBytes(head).first(file.read(0, head)));
}

void refuseEmpty(const InputFile& file) {
    if (file.size() == 0) {
        throw Failure{ExitStatus::cannotRead,
                      quoted(file.name()) + " is empty: nothing was recorded into it."};
    }
}

[[noreturn]] void refuseUnknown(const InputFile& file, const char* hint) {
    throw Failure{ExitStatus::cannotRead,
                  quoted(file.name()) +
                      " is no recording: it begins neither as an AVI file nor as a raw recording nor as "
                      "a DV stream. " +
                      hint};
}

} // namespace

const char* describe(Kind kind) {
    constexpr const char* names[] = {"raw recording", "AVI file", "DV stream"};
    return names[static_cast<size_t>(kind)];
}

const char* identifier(Kind kind) {
    constexpr const char* names[] = {"raw", "avi", "stream"};
    return names[static_cast<size_t>(kind)];
}

unsigned long frameSizeAt(const InputFile& file, unsigned long long offset) {
    std::array<unsigned char, 4> id;
    const unsigned long size = is625(FrameBytes(id).first(file.read(offset, id))) ? 144000 : 120000;
    // At 50 Mbit/s a second channel follows, whose blocks have the bit for it set.
    const bool twoChannels =
        file.read(offset + size, id) == id.size() && id[0] == 0x1F && id[1] == 0x0F && id[2] == 0;
    return twoChannels ? 2 * size : size;
}

bool Recording::read(unsigned long frame, Slot& slot, std::string& fault) {
    const Place where = place(frame);
    slot.prepare(where.size);
    if (file_.read(where.offset, slot.frame()) == where.size) {
        return true;
    }
    fault = "cannot be read";
    return false;
}

FrameBytes Recording::readHead(unsigned long frame, std::span<unsigned char> to) const {
    const Place where = place(frame);
    const std::span<unsigned char> part = to.first(std::min<size_t>(to.size(), where.size));
    return part.first(file_.read(where.offset, part));
}

std::unique_ptr<Recording> openRecording(const std::wstring& name, unsigned long sector) {
    InputFile file(name);
    refuseEmpty(file);
    const std::optional<Kind> kind = kindOf(file);
    if (!kind) {
        refuseUnknown(file, "If it is a damaged one, use 'dvrec repair'.");
    }
    if (*kind == Kind::avi) {
        return std::make_unique<AviRecording>(std::move(file), FileIOAVI::Trust::Indexes);
    }
    if (*kind == Kind::stream) {
        return std::make_unique<StreamRecording>(std::move(file));
    }
    return std::make_unique<RawRecording>(std::move(file), sector);
}

std::unique_ptr<SearchedRecording>
openDamaged(const std::wstring& name,
            const std::function<void(unsigned long long, unsigned long long)>& progress) {
    InputFile file(name);
    refuseEmpty(file);
    std::optional<Kind> kind = kindOf(file);
    if (!kind && hasExtension(name, L".avi")) {
        kind = Kind::avi;
    }
    auto found = std::make_unique<SearchedRecording>(std::move(file), kind, progress);
    if (found->frames() == 0) {
        refuseUnknown(found->file(), "No DV frame was found in it.");
    }
    return found;
}

} // namespace dvrec
