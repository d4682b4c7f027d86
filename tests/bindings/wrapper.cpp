/// @file
/// What marvo.hpp adds to the C interface: ownership, exceptions, callbacks. On the recording match.dv;
/// prints what does not hold.
#include "marvo.hpp"

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

int wrong = 0;

void expect(bool holds, int line) {
    if (!holds) {
        std::printf("line %d does not hold\n", line);
        ++wrong;
    }
}

template <class Call>
int codeOf(Call call) {
    try {
        call();
        return MARVO_OK;
    } catch (const marvo::error& failure) {
        expect(*failure.what() != '\0' && std::string(failure.name()).rfind("MARVO_E_", 0) == 0, __LINE__);
        return failure.code();
    }
}

void handles() {
    expect(codeOf([] { marvo::reader("missing.dv"); }) == MARVO_E_FILE, __LINE__);
    marvo::reader first("match.dv");
    marvo::reader reader(std::move(first));
    const marvo::frame frame = reader.read(1);
    expect(frame.data.size() == 144000 && frame.info.number == 1, __LINE__);
    expect(codeOf([&] { reader.read(reader.frames()); }) == MARVO_E_RANGE, __LINE__);
    expect(codeOf([&] { marvo::describe({frame.data.data(), 1u << 30}); }) == MARVO_E_RANGE, __LINE__);
    {
        // Its end completes the file.
        marvo::writer writer("copy.avi", frame.info.system, MARVO_KIND_BY_NAME, MARVO_REPLACE);
        writer.add(frame.data);
        writer.add(frame.data);
    }
    marvo::reader copy("copy.avi");
    expect(copy.info().end == MARVO_END_FINISHED && copy.frames() == 2, __LINE__);
    expect(copy.read(1).data == frame.data, __LINE__);
    marvo::writer finished("copy.dv", frame.info.system, MARVO_KIND_BY_NAME, MARVO_REPLACE);
    finished.add(frame.data);
    expect(finished.finish() == 1, __LINE__);
    expect(codeOf([&] { finished.add(frame.data); }) == MARVO_E_HANDLE, __LINE__);
    const marvo::sound sound = marvo::soundOf(frame.data);
    expect(sound.samples.size() == std::size_t{sound.info.samples} * sound.info.channels, __LINE__);
}

void callbacksOfWork() {
    bool thrown = false;
    try {
        marvo::exportRecording("match.dv", "thrown.avi", {}, [](marvo_u64, marvo_u64) -> bool { throw 42; });
    } catch (int value) {
        thrown = value == 42;
    }
    expect(thrown && codeOf([] { marvo::reader("thrown.avi"); }) == MARVO_E_FILE, __LINE__);
    expect(codeOf([] {
               marvo::verifyRecording("match.dv", {}, [](marvo_u64, marvo_u64) { return false; });
           }) == MARVO_E_CANCELLED,
           __LINE__);
    marvo::copy_options two;
    two.first = two.last = 1;
    two.flags = MARVO_REPLACE;
    expect(marvo::exportRecording("match.dv", "copy.avi", two).frames == 1, __LINE__);
}

/// Whether a line of the log arrives where it is counted.
bool arrives(const std::atomic<int>& count) {
    const int before = count;
    marvo::log("a line");
    for (int i = 0; i < 100 && count == before; ++i) {
        Sleep(20);
    }
    return count > before;
}

void subscriptions() {
    std::atomic<int> first{0};
    std::atomic<int> second{0};
    std::atomic<int> ended{0};
    marvo::subscription one = marvo::onLog([&](const std::string&) { ++first; });
    expect(arrives(first), __LINE__);
    marvo::subscription two = marvo::onLog([&](const std::string&) { ++second; });
    expect(arrives(second), __LINE__);
    const int stays = first;
    // The one that was replaced does not take the other one along.
    one.end();
    expect(arrives(second) && first == stays, __LINE__);
    two = marvo::subscription();
    const int last = second;
    // A function that ends its own subscription is still there afterwards.
    const std::string kept(100, 'k');
    one = marvo::onLog([&, kept](const std::string&) {
        one.end();
        ended += kept == std::string(100, 'k');
    });
    expect(arrives(ended) && second == last, __LINE__);
}

void texts() {
    for (const marvo::setting_info& setting : marvo::settings()) {
        marvo::setSetting(setting.name, marvo::setting(setting.name));
    }
    // Longer than the first try of a text.
    const std::string longer(300, 'x');
    marvo::setSetting("engine.playfile", longer);
    expect(marvo::setting("engine.playfile") == longer, __LINE__);
    expect(marvo::devices().size() == 1, __LINE__);
    expect(marvo::version() >> 16 == static_cast<marvo_u32>(std::stoi(marvo::versionText())), __LINE__);
}

} // namespace

int main() {
    try {
        handles();
        callbacksOfWork();
        subscriptions();
        texts();
    } catch (const std::exception& failure) {
        std::printf("thrown: %s\n", failure.what());
        return 100;
    }
    return wrong;
}
