#include "tests/system/picture.h"

namespace {

class Process : public PictureEngine {
protected:
    /// A program beside this one, in a directory of its own, since its library begins a new log.
    class Program {
    public:
        explicit Program(const std::string& name, const std::string& words) {
            char module[MAX_PATH];
            GetModuleFileNameA(nullptr, module, sizeof(module));
            const std::string folder =
                std::string(module).substr(0, std::string(module).find_last_of('\\') + 1);
            CreateDirectoryA("probe", nullptr);
            std::string command = "\"" + folder + name + ".exe\" " + words;
            STARTUPINFOA startup{};
            startup.cb = sizeof(startup);
            CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, "probe", &startup,
                           &process_);
        }
        /// Its exit code, or -1 when it hangs.
        int end() {
            DWORD code = 0;
            if (WaitForSingleObject(process_.hProcess, 120000) != WAIT_OBJECT_0) {
                TerminateProcess(process_.hProcess, 99);
                code = static_cast<DWORD>(-1);
            } else {
                GetExitCodeProcess(process_.hProcess, &code);
            }
            CloseHandle(process_.hThread);
            CloseHandle(process_.hProcess);
            return static_cast<int>(code);
        }

    private:
        PROCESS_INFORMATION process_{};
    };
};

TEST_F(Process, EndsWithoutDone) {
    useCamera("pal.dv", "lose = 60:0\nopen = 5000\n");
    for (const char* way : {"return", "exit", "no-com", "gone"}) {
        EXPECT_EQ(Program("marvo-exit-probe", way).end(), 42) << way;
    }
}

TEST_F(Process, UnloadsTheLibraryOnceTheEngineIsTakenApart) {
    EXPECT_EQ(Program("marvo-unload-probe", "").end(), 42) << "its number is the step that failed";
}

TEST_F(Process, AKilledProcessLeavesItsRecording) {
    EXPECT_EQ(Program("marvo-exit-probe", "killed").end(), 43);
    expectRecordingFollows("probe\\exit_probe.dv", "pal.dv", 144000, 20);
}

TEST_F(Process, AHostFeedsFramesOfItsOwn) {
    EXPECT_EQ(Program("marvo-live-feed", "no-such.dv").end(), 1);
    for (const char* stream : {"pal.dv", "ntsc.dv"}) {
        Program host("marvo-live-feed", "\"" + streamPath(stream) + "\"");
        HWND feed = nullptr;
        EXPECT_TRUE(pumpUntil([&] { return (feed = FindWindowW(L"marvo live feed", nullptr)) != nullptr; }));
        EXPECT_TRUE(moves(feed)) << "grey alone until the stream is fed";
        PostMessageW(feed, WM_CLOSE, 0, 0);
        EXPECT_EQ(host.end(), 0) << stream;
    }
}

} // namespace
