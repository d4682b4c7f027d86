#include "tools/interruption.h"

#include "tools/failure.h"

#include "marvo/core/platform.h"

#include <atomic>

namespace dvrec {

namespace {

std::atomic<bool> interrupted = false;

/// Called on a thread of the system's.
BOOL WINAPI note(DWORD event) {
    interrupted = true;
    // The process ends when this returns, but for the two events from the keyboard.
    constexpr DWORD timeToTidyUp_ms = 4000;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        Sleep(timeToTidyUp_ms);
    }
    return TRUE;
}

} // namespace

void catchInterruptions() {
    SetConsoleCtrlHandler(note, TRUE);
}

bool wasInterrupted() {
    return interrupted;
}

void checkInterruption() {
    if (interrupted) {
        throw Failure{ExitStatus::interrupted, "Interrupted; no file was left behind."};
    }
}

} // namespace dvrec
