/// @file
/// marvo for C++17 and any compiler: what marvo_c.h offers with handles that close themselves, exceptions,
/// and std::function for callbacks. Header only; of the DLL it uses the C functions alone, so that DLL and
/// host may be built by different compilers.
///
/// Text is std::string in UTF-8. Memory is a pointer with a size, marvo::bytes. What fails throws
/// marvo::error. What a function does, from which threads it may be called, and what its structures mean,
/// marvo_c.h says at the function of the same name.
#pragma once

#include "marvo_c.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace marvo {

using status_info = marvo_status_info;       ///< the whole state of the engine
using play_info = marvo_play_info;           ///< where play is
using event = marvo_event;                   ///< what has happened
using frame_info = marvo_frame_info;         ///< what a frame is
using sound_info = marvo_sound_info;         ///< the sound of a frame
using picture_info = marvo_picture_info;     ///< a picture
using recording_info = marvo_recording_info; ///< what a recording is
using setting_info = marvo_setting_info;     ///< what there is to know of a setting
using verify_result = marvo_verify_result;   ///< what a verification found
using copy_result = marvo_copy_result;       ///< what came of a copy

/// A result of the library that is not MARVO_OK, with its sentence for people.
class error : public std::runtime_error {
public:
    /// A failure with the sentence that tells of it.
    error(int code, const std::string& sentence) : std::runtime_error(sentence), code_(code) {}

    /// One of marvo_result.
    int code() const noexcept { return code_; }

    /// Its name, "MARVO_E_FILE".
    const char* name() const noexcept { return marvo_result_name(code_); }

private:
    int code_;
};

/// Throws the calling thread's last error for a result that is not MARVO_OK.
inline void check(int result) {
    if (result != MARVO_OK) {
        throw error(result, marvo_last_error());
    }
}

/// Memory that somebody else owns: a pointer and a size in bytes. Made of anything that has data() and
/// size(): a vector, an array, a span, a string.
class bytes {
public:
    /// `size` bytes at `data`.
    bytes(const void* data, std::size_t size) : data_(data), size_(size) {}

    /// The elements of a container.
    template <class Container, class Element = decltype(*std::declval<const Container&>().data())>
    bytes(const Container& container) : data_(container.data()), size_(container.size() * sizeof(Element)) {}

    /// Where it begins.
    const void* data() const noexcept { return data_; }

    /// The size as the library takes it; throws for one that no frame has.
    marvo_u32 size() const {
        if (size_ > MARVO_MOST_FRAME_BYTES) {
            throw error(MARVO_E_RANGE, "That is more than any frame has.");
        }
        return static_cast<marvo_u32>(size_);
    }

private:
    const void* data_;
    std::size_t size_;
};

namespace detail {

/// A structure with its size set, the rest 0.
template <class Structure>
Structure sized() {
    Structure structure{};
    structure.size = sizeof(Structure);
    return structure;
}

/// The text that `ask(buffer, capacity, needed)` gives.
template <class Ask>
std::string text(Ask ask) {
    std::string buffer(256, '\0');
    for (;;) {
        marvo_u32 needed = 0;
        const int result = ask(&buffer[0], static_cast<marvo_u32>(buffer.size()), &needed);
        if (result != MARVO_E_BUFFER) {
            check(result);
            buffer.resize(std::strlen(buffer.c_str()));
            return buffer;
        }
        // It may have grown since.
        buffer.resize(needed > buffer.size() ? needed : 2 * buffer.size());
    }
}

/// How a type of handle is given back.
template <class Handle, int(MARVO_CALL* Close)(Handle*)>
struct closer {
    void operator()(Handle* handle) const noexcept { Close(handle); }
};

template <class Handle, int(MARVO_CALL* Close)(Handle*)>
using owned = std::unique_ptr<Handle, closer<Handle, Close>>;

inline int MARVO_CALL finishQuietly(marvo_writer* writer) {
    return marvo_writer_finish(writer, nullptr);
}

/// A function that the library calls from its own thread, and the one of its kind that is set at present.
template <class Value, int(MARVO_CALL* Set)(void(MARVO_CALL*)(void*, const Value*), void*)>
class receiver : public std::enable_shared_from_this<receiver<Value, Set>> {
public:
    explicit receiver(std::function<void(const Value*)> function) : function_(std::move(function)) {}

    void set() {
        check(Set(&receiver::call, this));
        current() = this;
    }

    static void remove(void* receiver_) noexcept {
        auto* expected = static_cast<receiver*>(receiver_);
        // Another one may have taken its place, and stays.
        if (current().compare_exchange_strong(expected, nullptr)) {
            Set(nullptr, nullptr);
        }
    }

private:
    static std::atomic<receiver*>& current() {
        static std::atomic<receiver*> current_{nullptr};
        return current_;
    }

    // An exception here ends the program, as one that leaves a thread does.
    static void MARVO_CALL call(void* user, const Value* value) noexcept {
        // The function may end its own subscription, and lives until it has returned.
        const auto kept = static_cast<receiver*>(user)->shared_from_this();
        kept->function_(value);
    }

    std::function<void(const Value*)> function_;
};

} // namespace detail

/// A function that is called as long as this object lives. Once it has ended, the function is not running and
/// is not called again, unless it was ended by that function itself. Subscribe and end those of one kind from
/// one thread at a time; the newest takes the place of the one before.
class subscription {
public:
    subscription() = default;
    /// Takes the other one's over.
    subscription(subscription&& other) noexcept { swap(other); }
    /// Ends its own and takes the other one's over.
    subscription& operator=(subscription&& other) noexcept {
        subscription taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~subscription() { end(); }

    /// Ends it; again does no harm.
    void end() noexcept {
        if (receiver_) {
            remove_(receiver_.get());
            receiver_.reset();
        }
    }

    /// Subscribes a function to what `Set` sets.
    template <class Value, int(MARVO_CALL* Set)(void(MARVO_CALL*)(void*, const Value*), void*)>
    static subscription to(std::function<void(const Value*)> function) {
        auto made = std::make_shared<detail::receiver<Value, Set>>(std::move(function));
        made->set();
        subscription taken;
        taken.receiver_ = made;
        taken.remove_ = &detail::receiver<Value, Set>::remove;
        return taken;
    }

private:
    void swap(subscription& other) noexcept {
        std::swap(receiver_, other.receiver_);
        std::swap(remove_, other.remove_);
    }

    std::shared_ptr<void> receiver_;
    void (*remove_)(void*) = nullptr;
};

/// @name Version
/// @{

/// major * 65536 + minor * 256 + patch.
inline marvo_u32 version() noexcept {
    return marvo_version();
}

/// "1.2.3"
inline std::string versionText() {
    return marvo_version_text();
}

/// @}
/// @name Commands of the engine, from any thread
/// @{

/// The names of the capture devices.
inline std::vector<std::string> devices() {
    marvo_u32 count = 0;
    check(marvo_device_count(&count));
    std::vector<std::string> names;
    for (marvo_u32 i = 0; i < count; ++i) {
        names.push_back(detail::text([i](char* buffer, marvo_u32 capacity, marvo_u32* needed) {
            return marvo_device_name(i, buffer, capacity, needed);
        }));
    }
    return names;
}

/// Records into `file`; empty: the setting "engine.recfile".
inline void startRecord(const std::string& file = {}) {
    check(marvo_record_start(file.c_str()));
}
inline void stopRecord() {
    check(marvo_record_stop());
}
inline void flushRecord() {
    check(marvo_record_flush());
}
inline void live() {
    check(marvo_live());
}
/// Plays the frames `from` to `to` of `file` again and again; empty: the setting "engine.playfile".
inline void replay(marvo_u64 from, marvo_u64 to, const std::string& file = {}) {
    check(marvo_replay(from, to, file.c_str()));
}
inline void pause() {
    check(marvo_pause());
}
inline void resume() {
    check(marvo_resume());
}
inline void setSpeed(double factor) {
    check(marvo_set_speed(factor));
}
inline void seek(marvo_u64 frame) {
    check(marvo_seek(frame));
}
inline void step(marvo_i64 frames) {
    check(marvo_step(frames));
}
inline void setElement(marvo_u32 number, marvo_u64 in, marvo_u64 out) {
    check(marvo_element_set(number, in, out));
}
/// The in and the out point.
inline std::pair<marvo_u64, marvo_u64> element(marvo_u32 number) {
    std::pair<marvo_u64, marvo_u64> points;
    check(marvo_element_get(number, &points.first, &points.second));
    return points;
}
inline void playElement(marvo_u32 number) {
    check(marvo_element_play(number));
}
inline void marker(const std::string& text) {
    check(marvo_marker(text.c_str()));
}
inline void command(const std::string& line) {
    check(marvo_command(line.c_str()));
}
inline void log(const std::string& text) {
    check(marvo_log(text.c_str()));
}

/// @}
/// @name Settings
/// @{

/// What there is to set.
inline std::vector<setting_info> settings() {
    marvo_u32 count = 0;
    check(marvo_setting_count(&count));
    std::vector<setting_info> all(count, detail::sized<setting_info>());
    for (marvo_u32 i = 0; i < count; ++i) {
        check(marvo_setting_describe(i, &all[i]));
    }
    return all;
}
/// A setting as text.
inline std::string setting(const std::string& name) {
    return detail::text([&](char* buffer, marvo_u32 capacity, marvo_u32* needed) {
        return marvo_setting_get_text(name.c_str(), buffer, capacity, needed);
    });
}
inline marvo_i64 settingNumber(const std::string& name) {
    marvo_i64 value = 0;
    check(marvo_setting_get_number(name.c_str(), &value));
    return value;
}
inline void setSetting(const std::string& name, const std::string& value) {
    check(marvo_setting_set_text(name.c_str(), value.c_str()));
}
inline void setSettingNumber(const std::string& name, marvo_i64 value) {
    check(marvo_setting_set_number(name.c_str(), value));
}

/// @}
/// @name How it goes, from any thread
/// @{

inline status_info status() {
    auto status = detail::sized<status_info>();
    check(marvo_status(&status));
    return status;
}
inline play_info play() {
    auto play = detail::sized<play_info>();
    check(marvo_play(&play));
    return play;
}
/// The full path of the recording whose numbers the frames have.
inline std::string recordFile() {
    return detail::text(&marvo_record_file);
}
/// The next event, waited for up to `timeout_ms`.
inline std::optional<event> nextEvent(marvo_u32 timeout_ms = 0) {
    auto next = detail::sized<event>();
    const int result = marvo_event_next(&next, timeout_ms);
    if (result == MARVO_E_EMPTY) {
        return std::nullopt;
    }
    check(result);
    return next;
}
/// Calls `function` with each event, on a thread of the library's.
[[nodiscard]] inline subscription onEvent(std::function<void(const event&)> function) {
    return subscription::to<event, marvo_set_event_callback>(
        [function = std::move(function)](const event* happened) { function(*happened); });
}
/// Calls `function` with each line of the log, on a thread of the library's.
[[nodiscard]] inline subscription onLog(std::function<void(const std::string&)> function) {
    return subscription::to<char, marvo_set_log_callback>(
        [function = std::move(function)](const char* line) { function(line); });
}
/// Calls `function` with where play is once per tick, on a thread of the library's.
[[nodiscard]] inline subscription onPlay(std::function<void(const play_info&)> function) {
    return subscription::to<play_info, marvo_set_play_callback>(
        [function = std::move(function)](const play_info* play) { function(*play); });
}
/// Posts a message to a window once per tick of play; a null window ends it.
inline void postPlay(void* window, marvo_u32 message) {
    check(marvo_set_play_message(window, message));
}

/// @}

/// The engine, built as long as this object lives. There is one in a process. Its functions belong to the
/// thread that made it, and so does its end.
class engine {
public:
    /// Live, with the picture in `window` (a HWND); null: hidden until show().
    explicit engine(void* window = nullptr) { check(marvo_init(window)); }

    /// Without capture, to replay the frames `from` to `to` of a recording.
    engine(void* window, marvo_u64 from, marvo_u64 to, const std::string& file) {
        check(marvo_play_init(window, from, to, file.c_str()));
    }
    /// Takes the engine over.
    engine(engine&& other) noexcept : built_(std::exchange(other.built_, false)) {}
    /// Exchanges the two.
    engine& operator=(engine&& other) noexcept {
        std::swap(built_, other.built_);
        return *this;
    }
    ~engine() {
        if (built_) {
            marvo_done();
        }
    }

    /// Ends recording and replay and takes the engine apart; what fails then is told, as the destructor's is
    /// not.
    void done() {
        built_ = false;
        check(marvo_done());
    }
    /// Shows the picture in `window`, a HWND.
    void show(void* window) { check(marvo_show(window)); }
    /// Takes the picture out of its window.
    void hide() { check(marvo_hide()); }
    /// The picture's size in pixels.
    void setVideoSize(int width, int height) { check(marvo_set_video_size(width, height)); }
    /// The picture's position in its window in pixels.
    void setVideoPos(int x, int y) { check(marvo_set_video_pos(x, y)); }
    /// To be called at WM_DESTROY of the window that the picture is in.
    void windowDestroyed() { check(marvo_window_destroyed()); }

private:
    bool built_ = true;
};

/// A frame and what it is.
struct frame {
    std::vector<unsigned char> data;               ///< its bytes
    frame_info info = detail::sized<frame_info>(); ///< what it is
};

/// Interleaved 16-bit samples of all channels.
struct sound {
    std::vector<short> samples;                    ///< one of each channel, then the next of each
    sound_info info = detail::sized<sound_info>(); ///< what it is
};

/// Pixels of 4 bytes (blue, green, red, 255), the top line first.
struct picture {
    std::vector<unsigned char> pixels;                 ///< line by line
    picture_info info = detail::sized<picture_info>(); ///< its sides
};

namespace detail {

/// Fills a frame's memory, which it keeps from call to call, by `read(buffer, capacity, info)`.
template <class Read>
void fill(frame& into, Read read) {
    // Most frames are no larger, and then one call suffices.
    into.data.resize(144000);
    for (;;) {
        into.info = sized<frame_info>();
        const int result = read(into.data.data(), static_cast<marvo_u32>(into.data.size()), &into.info);
        const bool grows = result == MARVO_E_BUFFER && into.info.bytes > into.data.size();
        if (!grows) {
            check(result);
        }
        into.data.resize(into.info.bytes);
        if (!grows) {
            return;
        }
    }
}

} // namespace detail

/// Frame `number` of the running recording, into memory that is used again.
inline void readFrame(marvo_u64 number, frame& into) {
    detail::fill(into, [number](void* buffer, marvo_u32 capacity, frame_info* info) {
        return marvo_frame_read(number, buffer, capacity, info);
    });
}
/// Frame `number` of the running recording.
inline frame readFrame(marvo_u64 number) {
    frame read;
    readFrame(number, read);
    return read;
}
/// What the frame in memory is.
inline frame_info describe(bytes data) {
    auto info = detail::sized<frame_info>();
    check(marvo_frame_describe(data.data(), data.size(), &info));
    return info;
}
/// The sound of a whole frame.
inline sound soundOf(bytes data) {
    sound found;
    check(marvo_frame_sound(data.data(), data.size(), nullptr, 0, &found.info));
    found.samples.resize(std::size_t{found.info.samples} * found.info.channels);
    if (!found.samples.empty()) {
        check(marvo_frame_sound(data.data(), data.size(), found.samples.data(),
                                static_cast<marvo_u32>(found.samples.size()), &found.info));
    }
    return found;
}

/// Makes pictures of frames by the system's DV decoder.
class decoder {
public:
    decoder() {
        marvo_decoder* made = nullptr;
        check(marvo_decoder_open(&made));
        handle_.reset(made);
    }

    /// The picture of a whole frame.
    picture decode(bytes data) {
        picture made;
        check(marvo_decoder_decode(handle_.get(), data.data(), data.size(), nullptr, 0, &made.info));
        made.pixels.resize(made.info.bytes);
        check(marvo_decoder_decode(handle_.get(), data.data(), data.size(), made.pixels.data(),
                                   made.info.bytes, &made.info));
        return made;
    }

private:
    detail::owned<marvo_decoder, marvo_decoder_close> handle_;
};

/// A source of frames in place of a camera; the next engine captures them.
class feed {
public:
    /// `system` is one of marvo_system.
    explicit feed(int system) {
        marvo_feed* made = nullptr;
        check(marvo_feed_open(system, &made));
        handle_.reset(made);
    }

    /// Hands a whole frame over, as a camera does.
    void add(bytes data) { check(marvo_feed_add(handle_.get(), data.data(), data.size())); }

private:
    detail::owned<marvo_feed, marvo_feed_close> handle_;
};

/// A recording that is read: raw, AVI or DV stream; it may still grow.
class reader {
public:
    /// Opens a recording of any kind.
    explicit reader(const std::string& file) {
        marvo_reader* made = nullptr;
        check(marvo_reader_open(file.c_str(), &made));
        handle_.reset(made);
    }

    /// What it is.
    recording_info info() const {
        auto info = detail::sized<recording_info>();
        check(marvo_reader_info(handle_.get(), &info));
        return info;
    }

    /// Whole frames, as of the opening or the last refresh().
    marvo_u64 frames() const { return info().frames; }

    /// Looks for frames that were written since.
    void refresh() { check(marvo_reader_refresh(handle_.get())); }

    /// Frame `number`, into memory that is used again.
    void read(marvo_u64 number, frame& into) {
        detail::fill(into, [this, number](void* buffer, marvo_u32 capacity, frame_info* info) {
            return marvo_reader_read(handle_.get(), number, buffer, capacity, info);
        });
    }
    /// Frame `number`.
    frame read(marvo_u64 number) {
        frame read_;
        read(number, read_);
        return read_;
    }

    /// What frame `number` is, without its bytes.
    frame_info describe(marvo_u64 number) {
        auto info = detail::sized<frame_info>();
        check(marvo_reader_read(handle_.get(), number, nullptr, 0, &info));
        return info;
    }

private:
    detail::owned<marvo_reader, marvo_reader_close> handle_;
};

/// A recording that is written. Its end completes the file, too, but tells of no failure: call finish().
class writer {
public:
    /// `system` is one of marvo_system, `kind` of marvo_kind, `flags` 0 or MARVO_REPLACE.
    writer(const std::string& file, int system, int kind = MARVO_KIND_BY_NAME, marvo_u32 flags = 0) {
        marvo_writer* made = nullptr;
        check(marvo_writer_create(file.c_str(), kind, system, flags, &made));
        handle_.reset(made);
    }

    /// Appends a whole frame.
    void add(bytes data) { check(marvo_writer_add(handle_.get(), data.data(), data.size())); }

    /// Completes the file; gives how many frames it has.
    marvo_u64 finish() {
        marvo_u64 frames = 0;
        check(marvo_writer_finish(handle_.release(), &frames));
        return frames;
    }

private:
    detail::owned<marvo_writer, detail::finishQuietly> handle_;
};

/// Told how much of how much is done; false ends the work, which then throws MARVO_E_CANCELLED.
using progress = std::function<bool(marvo_u64 done, marvo_u64 all)>;
/// Told of a fault: where in the file, in bytes, and what; false ends the work.
using finding = std::function<bool(marvo_u64 offset, const std::string& text)>;

/// What exportRecording() copies, and how.
struct copy_options {
    marvo_u64 first = 0;               ///< first frame
    marvo_u64 last = MARVO_TO_THE_END; ///< last frame, included
    int kind = MARVO_KIND_BY_NAME;     ///< one of marvo_kind
    marvo_u32 flags = 0;               ///< of marvo_flags
};

namespace detail {

/// Carries the functions of one call through the library, and an exception out of them back.
class visit {
public:
    visit(const progress* work, const finding* found) : work_(work), found_(found) {}

    marvo_work_fn work() const { return work_ && *work_ ? &visit::onWork : nullptr; }
    marvo_finding_fn found() const { return found_ && *found_ ? &visit::onFound : nullptr; }

    void end(int result) const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        check(result);
    }

private:
    template <class Call>
    int guarded(Call call) noexcept {
        try {
            return call() ? 0 : 1;
        } catch (...) {
            failure_ = std::current_exception();
            return 1;
        }
    }
    static int MARVO_CALL onWork(void* user, marvo_u64 done, marvo_u64 all) {
        auto* self = static_cast<visit*>(user);
        return self->guarded([&] { return (*self->work_)(done, all); });
    }
    static int MARVO_CALL onFound(void* user, marvo_u64 offset, const char* text) {
        auto* self = static_cast<visit*>(user);
        return self->guarded([&] { return (*self->found_)(offset, text); });
    }

    const progress* work_;
    const finding* found_;
    std::exception_ptr failure_;
};

} // namespace detail

/// Looks at the whole of a recording and changes nothing; either function may be empty.
inline verify_result verifyRecording(const std::string& file, const finding& found = {},
                                     const progress& work = {}) {
    auto result = detail::sized<verify_result>();
    detail::visit visit(&work, &found);
    visit.end(marvo_verify(file.c_str(), visit.found(), visit.work(), &visit, &result));
    return result;
}

/// Copies frames of a recording into a new file, also as another kind.
inline copy_result exportRecording(const std::string& from, const std::string& to,
                                   const copy_options& options = {}, const progress& work = {}) {
    auto result = detail::sized<copy_result>();
    auto chosen = detail::sized<marvo_copy_options>();
    chosen.flags = options.flags;
    chosen.kind = options.kind;
    chosen.first = options.first;
    chosen.last = options.last;
    detail::visit visit(&work, nullptr);
    visit.end(marvo_export(from.c_str(), to.c_str(), &chosen, visit.work(), &visit, &result));
    return result;
}

/// Writes all whole frames of a damaged recording into a new file.
inline copy_result repairRecording(const std::string& from, const std::string& to, marvo_u32 flags = 0,
                                   const progress& work = {}) {
    auto result = detail::sized<copy_result>();
    detail::visit visit(&work, nullptr);
    visit.end(marvo_repair(from.c_str(), to.c_str(), flags, visit.work(), &visit, &result));
    return result;
}

} // namespace marvo
