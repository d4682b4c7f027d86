#include "marvo/recording/export.h"

#include "marvo/core/guarded.h"
#include "marvo/core/text.h"
#include "marvo/recording/copy.h"
#include "marvo/recording/kinds.h"
#include "marvo/recording/part_file.h"

#include <algorithm>
#include <string>

using namespace recording;

struct dvExport::State {
    bool replace = false;
    bool sound = true;
    bool cancelled = false;
    std::wstring explanation;
    std::wstring note;
    unsigned long long frames = 0;
};

namespace {

std::wstring quoted(const std::wstring& name) {
    return L"'" + name + L"'";
}

std::wstring cannotWrite(const wchar_t* name, const std::wstring& reason) {
    return quoted(name) + L" cannot be written: " + reason + L".";
}

std::wstring textOf(PartFile::Refusal refusal) {
    switch (refusal) {
    case PartFile::Refusal::source:
        return L"it is the recording that is read";
    case PartFile::Refusal::folder:
        return L"it is a folder";
    case PartFile::Refusal::exists:
        return L"it exists";
    default:
        return {};
    }
}

} // namespace

dvExport::dvExport() : state_(std::make_unique<State>()) {}

dvExport::~dvExport() = default;

void dvExport::replaceExisting(bool replace) {
    state_->replace = replace;
}

void dvExport::withSound(bool sound) {
    state_->sound = sound;
}

bool dvExport::cancelled() const {
    return state_->cancelled;
}

const wchar_t* dvExport::explanation() const {
    return state_->explanation.c_str();
}

const wchar_t* dvExport::note() const {
    return state_->note.c_str();
}

unsigned long long dvExport::frames() const {
    return state_->frames;
}

bool dvExport::run(const wchar_t* from, unsigned long long first, unsigned long long last, const wchar_t* to,
                   const Progress& progress) {
    state_->cancelled = false;
    state_->frames = 0;
    const bool came = vcore::guarded([&] {
        state_->note.clear();
        state_->explanation = L"There is not enough memory to export.";
        if (work(from ? from : L"", first, last, to ? to : L"", progress)) {
            state_->explanation.clear();
        }
    });
    return came && state_->explanation.empty();
}

bool dvExport::work(const wchar_t* from, unsigned long long first, unsigned long long last, const wchar_t* to,
                    const Progress& progress) {
    std::wstring& said = state_->explanation;
    const KindRow* const row = rowOfExtension(to);
    if (!row) {
        said = cannotWrite(to, L"its name ends with neither .avi nor .dv");
        return false;
    }
    std::wstring predicate = L"holds no whole frame";
    const std::unique_ptr<Reader> reader = openByContent(from, predicate);
    if (!reader || reader->frames() == 0) {
        said = quoted(from) + L" " + predicate + L".";
        return false;
    }
    last = last == toTheEnd ? reader->frames() - 1 : last;
    if (first > last || last >= reader->frames()) {
        said = quoted(from) + L" has no frames from " + std::to_wstring(first) + L" to " +
               std::to_wstring(last) + L": the last frame is " + std::to_wstring(reader->frames() - 1) + L".";
        return false;
    }
    PartFile file(to, state_->replace, from);
    if (file.refusal() != PartFile::Refusal::none) {
        said = cannotWrite(to, textOf(file.refusal()));
        return false;
    }
    const auto tell = [&](unsigned long long done, unsigned long long all) {
        state_->frames = done;
        return !progress || progress(done, all);
    };
    const Copied copied =
        copy(*reader, file.temporaryName().c_str(), {first, last, row->kind, state_->sound}, tell);
    state_->note = copied.note.empty() ? copied.note : copied.note + L".";
    switch (copied.end) {
    case Copied::End::cancelled:
        state_->cancelled = true;
        said = L"The export of " + quoted(to) + L" was cancelled.";
        return false;
    case Copied::End::cannotRead:
        said =
            L"Frame " + std::to_wstring(copied.frame) + L" of " + quoted(from) + L" " + copied.reason + L".";
        return false;
    case Copied::End::cannotWrite:
        said = cannotWrite(to, copied.reason);
        return false;
    default:
        break;
    }
    if (!file.publish()) {
        said = cannotWrite(to, vcore::systemMessage(GetLastError()));
        return false;
    }
    return true;
}
