#include "bench/groups.h"
#include "bench/recording.h"
#include "bench/statistics.h"

#include "marvo.h"

#include <stdexcept>

namespace {

/// The folder of this program, with the backslash at its end.
std::wstring programFolder() {
    wchar_t path[MAX_PATH] = L"";
    const std::wstring name(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
    return name.substr(0, name.find_last_of(L'\\') + 1);
}

/// Seconds that a program takes from its start to its end; what it says goes nowhere.
double run_s(std::wstring commandLine, HANDLE nowhere) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = startup.hStdOutput = startup.hStdError = nowhere;
    PROCESS_INFORMATION child{};
    const Stopwatch watch;
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &child)) {
        throw std::runtime_error("a program beside this one cannot be started");
    }
    const vcore::handle process(child.hProcess);
    const vcore::handle thread(child.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    const double seconds = watch.seconds();
    DWORD status = 1;
    if (!GetExitCodeProcess(process.get(), &status) || status != 0) {
        throw std::runtime_error("a program beside this one has failed");
    }
    return seconds;
}

/// A raw recording of one second.
void record(const wchar_t* name) {
    const Stream stream(streamPath("pal.dv"), Stream::palFrame);
    dvRecFile file;
    file.setFrameSize(Stream::palFrame);
    bool good = file.open(name);
    file.setFrameSize(Stream::palFrame);
    const std::uint32_t header[] = {Stream::palFrame, 400000};
    std::memcpy(file.data(), header, sizeof header);
    for (size_t i = 0; good && i < 25; ++i) {
        std::memcpy(file.data() + dvFile::headerSize, stream[i], Stream::palFrame);
        unsigned long done = 0;
        good = file.write(file.data(), file.bufferSize(), &done);
    }
    if (!good) {
        throw std::runtime_error("a recording cannot be made");
    }
}

} // namespace

void measureStart(Bench& bench) {
    bench.progress.step("starting dvrec info");
    const TemporaryFile file(L"bench_start.dv");
    record(file.name());
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const vcore::handle nowhere(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0,
                                            nullptr));
    const std::wstring folder = L"\"" + programFolder();
    const Comparison result = compare(
        bench.scaled(60, 25),
        [&] { return run_s(folder + L"dvrec.exe\" info " + file.name(), nowhere.get()); },
        [&] { return run_s(folder + L"marvo-bench-empty.exe\"", nowhere.get()); });
    bench.report.add("starting dvrec info, against an empty program", 1 / result.ratio, "times",
                     Target::atMost(1.3),
                     "from the start of the process to its end, a recording of one second");
    bench.report.add("starting dvrec info", result.engine_s * 1000, "ms");
}
