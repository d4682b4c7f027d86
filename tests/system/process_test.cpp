#include "tests/system/engine.h"

namespace {

class Process : public Engine {
protected:
    /// Runs a probe, which builds the engine and ends in the given way. Its exit code, or -1 when it hangs.
    static int probe(const std::string& way, const std::string& name = "marvo-exit-probe") {
        char module[MAX_PATH];
        GetModuleFileNameA(nullptr, module, sizeof(module));
        const std::string folder = std::string(module).substr(0, std::string(module).find_last_of('\\') + 1);
        // A directory of its own, since its library begins a new log.
        CreateDirectoryA("probe", nullptr);
        std::string command = "\"" + folder + name + ".exe\" " + way;
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, "probe", &startup,
                            &process)) {
            return -2;
        }
        DWORD code = 0;
        if (WaitForSingleObject(process.hProcess, 120000) != WAIT_OBJECT_0) {
            TerminateProcess(process.hProcess, 99);
            code = static_cast<DWORD>(-1);
        } else {
            GetExitCodeProcess(process.hProcess, &code);
        }
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return static_cast<int>(code);
    }
};

TEST_F(Process, EndsWithoutDone) {
    useCamera("pal.dv", "lose = 60:0\nopen = 5000\n");
    for (const char* way : {"return", "exit", "no-com", "gone"}) {
        EXPECT_EQ(probe(way), 42) << way;
    }
}

TEST_F(Process, UnloadsTheLibraryOnceTheEngineIsTakenApart) {
    EXPECT_EQ(probe("", "marvo-unload-probe"), 42) << "its number is the step that failed";
}

TEST_F(Process, AKilledProcessLeavesItsRecording) {
    EXPECT_EQ(probe("killed"), 43);
    expectRecordingFollows("probe\\exit_probe.dv", "pal.dv", 144000, 20);
}

} // namespace
