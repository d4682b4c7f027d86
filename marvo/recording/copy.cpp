#include "marvo/recording/copy.h"

#include "marvo/recording/avi_file_writer.h"
#include "marvo/recording/kinds.h"
#include "marvo/recording/read_ahead.h"
#include "marvo/recording/sound_source.h"

#include <algorithm>

namespace recording {

namespace {

/// The new file, with sound or without.
class Copy {
public:
    Copy(Reader& from, const CopyOrder& order) : from_(from), order_(order) {
        Reader::Place place;
        from.place(order.first, place);
        size_ = place.size;
    }

    Copied run(const wchar_t* to, const Reader::ProgressCall& progress) {
        if (order_.kind == Kind::avi && order_.sound) {
            findSound();
        }
        const std::unique_ptr<Writer> writer = create(to);
        return writer ? run(*writer, progress) : result_;
    }

    Copied run(Writer& to, const Reader::ProgressCall& progress) {
        write(to, progress);
        const bool finished = to.flush() && to.finish();
        if (!finished && result_.end == Copied::End::whole) {
            fail(Copied::End::cannotWrite, to.error());
        }
        return result_;
    }

private:
    void findSound() {
        sound_ = SoundSource::inStream(from_, result_.note);
        if (!sound_) {
            sound_ = SoundSource::inFrames(from_, order_.first, order_.last);
            if (!result_.note.empty()) {
                result_.note += sound_ ? L"; the sound in the frames is taken instead"
                                       : L", and there is none in the frames";
            }
        }
        if (sound_) {
            result_.soundRate = sound_->format().rate;
            result_.soundChannels = sound_->format().channels;
        }
    }

    std::unique_ptr<Writer> create(const wchar_t* to) {
        std::unique_ptr<Writer> writer;
        std::wstring error;
        if (sound_) {
            auto withSound = AviFileWriter::createWithSound(to, size_, sound_->format(), error);
            aviWriter_ = withSound.get();
            writer = std::move(withSound);
        } else {
            const vdv::System* const system = vdv::systemOf(size_);
            const long time_100ns = (system ? *system : vdv::system625).timePerFrame_100ns;
            writer = rowOf(order_.kind).create(to, size_, time_100ns, error);
        }
        if (!writer) {
            fail(Copied::End::cannotWrite, error);
        }
        return writer;
    }

    void write(Writer& to, const Reader::ProgressCall& progress) {
        ReadAhead frames(from_, order_.first, order_.last);
        std::wstring error;
        result_.frame = order_.first;
        if (!frames.begin(std::max(from_.bufferBytes(), to.bufferBytes()), error)) {
            fail(Copied::End::cannotRead, L"cannot be read: " + error);
            return;
        }
        for (unsigned long long frame = order_.first; frame <= order_.last; ++frame) {
            result_.frame = frame;
            RecordBuffer* const buffer = frames.next(error);
            if (!buffer) {
                fail(Copied::End::cannotRead, L"cannot be read" + (error.empty() ? error : L": " + error));
                return;
            }
            if (buffer->frameBytes() != size_) {
                fail(Copied::End::cannotRead, L"has " + std::to_wstring(buffer->frameBytes()) +
                                                  L" bytes and those before have " + std::to_wstring(size_) +
                                                  L", which do not go into one file");
                return;
            }
            if (!writeFrame(to, *buffer, frame)) {
                fail(Copied::End::cannotWrite, to.error());
                return;
            }
            if (!progress(frame - order_.first + 1, order_.last - order_.first + 1)) {
                result_.end = Copied::End::cancelled;
                return;
            }
        }
    }

    bool writeFrame(Writer& to, RecordBuffer& buffer, unsigned long long frame) {
        if (!aviWriter_) {
            return to.write(buffer);
        }
        return aviWriter_->writeWithSound(buffer, sound_->next(frame, {buffer.frame(), size_}));
    }

    void fail(Copied::End end, const std::wstring& reason) {
        result_.end = end;
        result_.reason = reason;
    }

    Reader& from_;
    const CopyOrder& order_;
    Copied result_;
    unsigned long size_ = 0;
    std::unique_ptr<SoundSource> sound_;
    AviFileWriter* aviWriter_ = nullptr; ///< the writer, when there is sound
};

} // namespace

Copied copy(Reader& from, const wchar_t* to, const CopyOrder& order, const Reader::ProgressCall& progress) {
    return Copy(from, order).run(to, progress);
}

Copied copy(Reader& from, Writer& to, const CopyOrder& order, const Reader::ProgressCall& progress) {
    return Copy(from, order).run(to, progress);
}

} // namespace recording
