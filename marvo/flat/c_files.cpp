// Whole recordings: verified, copied, repaired.
#include "marvo/core/text.h"
#include "marvo/flat/file_trouble.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/open_recording.h"
#include "marvo/flat/structure.h"
#include "marvo/flat/text.h"
#include "marvo/recording/copy.h"
#include "marvo/recording/kinds.h"
#include "marvo/recording/part_file.h"
#include "marvo/recording/searched_reader.h"
#include "marvo/recording/verification.h"

#include <algorithm>

using namespace flat;
using recording::Copied;
using recording::Kind;
using recording::PartFile;
using recording::Reader;

namespace {

constexpr unsigned long mostFaults = 1000;

/// Tells the host how far the work is; it may end it.
class Work {
public:
    Work(marvo_work_fn call, void* user) : call_(call), user_(user) {}

    /// False when the host wants no more.
    bool goOn(unsigned long long done, unsigned long long all) {
        cancelled_ = cancelled_ || (call_ && call_(user_, done, all) != 0);
        return !cancelled_;
    }
    /// The host wants no more.
    void cancel() { cancelled_ = true; }
    bool cancelled() const { return cancelled_; }
    /// Throws MARVO_E_CANCELLED when that was so.
    void check() const {
        if (cancelled_) {
            fail(MARVO_E_CANCELLED, "The work was cancelled.");
        }
    }

private:
    const marvo_work_fn call_;
    void* const user_;
    bool cancelled_ = false;
};

/// What is to be made.
struct Order {
    unsigned long long first = 0;
    unsigned long long last = MARVO_TO_THE_END;
    Kind kind = Kind::stream;
    marvo_u32 flags = 0;
};

void checkRefusal(const PartFile& file) {
    switch (file.refusal()) {
    case PartFile::Refusal::none:
        return;
    case PartFile::Refusal::exists:
        fail(MARVO_E_EXISTS, quoted(file.name()) + " exists; say MARVO_REPLACE to replace it.");
    case PartFile::Refusal::source:
        fail(MARVO_E_ARGUMENT, quoted(file.name()) + " is the recording that is read.");
    case PartFile::Refusal::folder:
        fail(MARVO_E_FILE, quoted(file.name()) + " is a folder.");
    }
}

unsigned long long bytesOf(const std::wstring& name) {
    recording::InputFile file;
    file.open(name.c_str());
    return file.size();
}

/// Copies frames into a new file, which appears when it is whole.
void make(Reader& from, const std::wstring& to, Order order, Work& work, marvo_copy_result& result) {
    if (from.frames() == 0) {
        fail(MARVO_E_FORMAT, quoted(from.name()) + " holds no whole frame.");
    }
    order.last = order.last == MARVO_TO_THE_END ? from.frames() - 1 : order.last;
    if (order.first > order.last || order.last >= from.frames()) {
        fail(MARVO_E_RANGE,
             quoted(from.name()) + vcore::format(" has no frames from %llu to %llu: the last one is %llu.",
                                                 order.first, order.last, from.frames() - 1));
    }
    PartFile file(to, (order.flags & MARVO_REPLACE) != 0, from.name());
    checkRefusal(file);
    const Copied copied = recording::copy(
        from, file.temporaryName().c_str(),
        {order.first, order.last, order.kind, (order.flags & MARVO_NO_SOUND) == 0},
        [&work](unsigned long long done, unsigned long long all) { return work.goOn(done, all); });
    work.check();
    if (copied.end == Copied::End::cannotRead) {
        fail(MARVO_E_FILE, vcore::format("Frame %llu of ", copied.frame) + quoted(from.name()) + " " +
                               utf8(copied.reason) + "; marvo_repair saves the others.");
    }
    if (copied.end == Copied::End::cannotWrite) {
        fail(MARVO_E_FILE, quoted(to) + " cannot be written: " + utf8(copied.reason) + ".");
    }
    if (!file.publish()) {
        fail(MARVO_E_FILE,
             quoted(to) + " cannot be written: " + utf8(vcore::systemMessage(GetLastError())) + ".");
    }
    result.kind = kindOf(order.kind);
    result.frames = order.last - order.first + 1;
    result.bytes = bytesOf(to);
    result.sound_rate = static_cast<marvo_u32>(copied.soundRate);
    result.sound_channels = static_cast<marvo_u32>(copied.soundChannels);
    result.exact = 1;
    putText(result.note, sizeof result.note, copied.note.empty() ? std::string() : utf8(copied.note) + ".");
}

/// The kind of the file that is to be made.
Kind chooseKind(int kind, const std::wstring& to) {
    switch (kind) {
    case MARVO_KIND_RAW:
        return Kind::raw;
    case MARVO_KIND_AVI:
        return Kind::avi;
    case MARVO_KIND_STREAM:
        return Kind::stream;
    case MARVO_KIND_BY_NAME:
        break;
    default:
        fail(MARVO_E_ARGUMENT, vcore::format("There is no kind of recording number %d.", kind));
    }
    const recording::KindRow* const row = recording::rowOfExtension(to.c_str());
    if (!row) {
        fail(MARVO_E_ARGUMENT, quoted(to) + " ends with neither .avi nor .dv; name it so, or say the kind.");
    }
    return row->kind;
}

/// Of the damaged file's own kind when the new one's name may mean that.
Kind repairedKind(Kind own, const std::wstring& to) {
    const recording::KindRow& named = recording::rowOfName(to.c_str());
    if (recording::rowOf(own).isMeantBy(to.c_str())) {
        return own;
    }
    if (*named.extension == '\0') {
        fail(MARVO_E_ARGUMENT, quoted(to) + " needs the extension " + recording::rowOf(own).extension + ".");
    }
    return named.kind;
}

} // namespace

int MARVO_CALL marvo_verify(const char* file, marvo_finding_fn finding, marvo_work_fn work, void* user,
                            marvo_verify_result* result) {
    return guarded([&] {
        const std::wstring name = wideText(file, "file name");
        Answer<marvo_verify_result> to(result, "result", true);
        const OpenRecording recording(name);
        Work going(work, user);
        const auto tell = [&](unsigned long long offset, const std::string& text) {
            if (finding && !going.cancelled() && finding(user, offset, asUtf8(text).c_str()) != 0) {
                going.cancel();
            }
        };
        const unsigned long long faults = recording::verify(
            recording.reader(), mostFaults, tell,
            [&going](unsigned long long done, unsigned long long all) { return going.goOn(done, all); });
        going.check();
        to->kind = kindOf(recording.reader().kind());
        to->frames = recording.reader().frames();
        to->faults = faults;
        to.give();
    });
}

int MARVO_CALL marvo_export(const char* from, const char* to, const marvo_copy_options* options,
                            marvo_work_fn work, void* user, marvo_copy_result* result) {
    return guarded([&] {
        const std::wstring source = wideText(from, "file name");
        const std::wstring target = wideText(to, "name of the new file");
        Answer<marvo_copy_result> told(result, "result", true);
        Order order;
        marvo_i32 kind = MARVO_KIND_BY_NAME;
        if (options) {
            const auto said = question(options, "options");
            order.first = said.first;
            // A structure that ends before it says nothing.
            order.last = options->size >= sizeof said ? said.last : MARVO_TO_THE_END;
            order.flags = said.flags;
            kind = said.kind;
        }
        order.kind = chooseKind(kind, target);
        const OpenRecording recording(source);
        Work going(work, user);
        make(recording.reader(), target, order, going, *told);
        told.give();
    });
}

int MARVO_CALL marvo_repair(const char* from, const char* to, marvo_u32 flags, marvo_work_fn work, void* user,
                            marvo_copy_result* result) {
    return guarded([&] {
        const std::wstring source = wideText(from, "file name");
        const std::wstring target = wideText(to, "name of the new file");
        Answer<marvo_copy_result> told(result, "result", true);
        Work going(work, user);
        std::wstring reason;
        const auto found = recording::SearchedReader::open(
            source.c_str(),
            [&going](unsigned long long done, unsigned long long all) {
                going.goOn(done, all);
                going.check();
                return true;
            },
            reason);
        if (!found) {
            failOpening(source, L"cannot be opened: " + reason);
        }
        if (found->frames() == 0) {
            fail(MARVO_E_FORMAT, quoted(source) + " holds no DV frame that could be saved.");
        }
        Order order;
        order.kind = repairedKind(found->kind(), target);
        order.flags = (flags & MARVO_REPLACE) | MARVO_NO_SOUND;
        make(*found, target, order, going, *told);
        for (const recording::SearchedReader::Hole& hole : found->holes()) {
            told->lost += hole.lost;
            told->damaged += hole.damaged;
            told->exact =
                told->exact != 0 && hole.counted != recording::SearchedReader::Counted::room ? 1 : 0;
            ++told->holes;
        }
        told.give();
    });
}
