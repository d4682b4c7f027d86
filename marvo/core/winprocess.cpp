#include "marvo/core/winprocess.h"

#include <cwchar>
#include <string>

namespace vwin {

namespace {

/// A process is killed asynchronously; its end is waited for so long.
constexpr unsigned long kill_ms = 1000;

constexpr unsigned long killedCode = static_cast<unsigned long>(-1);

/// The system's limit, which not every system keeps.
constexpr std::size_t longestLine = 32766;

constexpr unsigned long readBytes = 32768;

/// The longest character of any code page, in bytes.
constexpr unsigned long longestCharacter = 4;

SECURITY_ATTRIBUTES inheritable() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

constexpr const wchar_t* blanks = L" \t\n\r";

/// The first word of a command line, by the rules of `strtokens_cpp`, which would split all of a long line in
/// vain.
std::wstring firstWord(const std::wstring& commandLine) {
    std::wstring word;
    bool quoted = false;
    for (const wchar_t c : commandLine) {
        if (c == L'"') {
            quoted = !quoted;
        } else if (quoted || !std::wcschr(blanks, c)) {
            word += c;
        } else {
            break;
        }
    }
    return word;
}

/// The whole path of a program; empty when there is none.
std::wstring findProgram(const std::wstring& name) {
    std::wstring path(MAX_PATH, 0);
    DWORD length =
        SearchPathW(nullptr, name.c_str(), L".exe", static_cast<DWORD>(path.size()), path.data(), nullptr);
    if (length > path.size()) {
        path.resize(length);
        length = SearchPathW(nullptr, name.c_str(), L".exe", length, path.data(), nullptr);
    }
    path.resize(length < path.size() ? length : 0);
    return path;
}

/// Makes a log file of a name that is not taken yet, to be inherited by the child, and sets `name`.
vcore::handle createLog(vcore::str& name) {
    constexpr DWORD attempts = 256;
    SECURITY_ATTRIBUTES inherit = inheritable();
    const DWORD first = GetTickCount();
    for (DWORD i = 0; i < attempts; ++i) {
        name.sprintf(L"log%08x.txt", first + i);
        // Appending only, so that the output of several processes is not overwritten by one of them.
        vcore::handle log(CreateFileW(name.oleStr(), FILE_APPEND_DATA | SYNCHRONIZE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
        if (log || GetLastError() != ERROR_FILE_EXISTS) {
            return log;
        }
    }
    return vcore::handle();
}

vcore::handle openNothing() {
    SECURITY_ATTRIBUTES inherit = inheritable();
    return vcore::handle(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                     OPEN_EXISTING, 0, nullptr));
}

/// Converts bytes of the ANSI code page and returns the number of characters; 0 when `flags` are not met.
int widen(const char* bytes, unsigned long n, DWORD flags, std::wstring& wide) {
    return MultiByteToWideChar(CP_ACP, flags, bytes, static_cast<int>(n), wide.data(),
                               static_cast<int>(wide.size()));
}

BOOL CALLBACK closeWindow(HWND window, LPARAM process) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(process)) {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

} // namespace

bool winprocess::start(const wchar_t* commandLine) {
    return startProcess(commandLine, nullptr);
}

bool winprocess::startConsole(const wchar_t* commandLine) {
    if (running()) {
        return false;
    }
    vcore::str name;
    vcore::handle log = createLog(name);
    if (!log) {
        return false;
    }
    if (log_.open(name.oleStr()) && startProcess(commandLine, log.get())) {
        return true;
    }
    log_.open(L"");
    log.reset();
    DeleteFileW(name.oleStr());
    return false;
}

bool winprocess::startProcess(const wchar_t* commandLine, HANDLE console) {
    if (!commandLine || running()) {
        return false;
    }
    // Blanks in front would make an empty first argument.
    std::wstring line(commandLine + std::wcsspn(commandLine, blanks));
    const std::wstring program = findProgram(firstWord(line));
    if (program.empty() || line.size() > longestLine) {
        return false;
    }
    const vcore::handle nothing = console ? openNothing() : vcore::handle();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (console) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = nothing.get();
        startup.hStdOutput = startup.hStdError = console;
    }
    PROCESS_INFORMATION child{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, console ? CREATE_NO_WINDOW : 0,
                        nullptr, nullptr, &startup, &child)) {
        return false;
    }
    CloseHandle(child.hThread);
    process_.reset(child.hProcess);
    id_ = child.dwProcessId;
    if (!console) {
        log_.open(L"");
    }
    return true;
}

bool winprocess::wait(unsigned long timeoutMs) const {
    return !process_ || WaitForSingleObject(process_.get(), timeoutMs) == WAIT_OBJECT_0;
}

bool winprocess::stop(unsigned long timeoutMs) {
    if (!running()) {
        return true;
    }
    EnumWindows(closeWindow, static_cast<LPARAM>(id_));
    if (wait(timeoutMs)) {
        return true;
    }
    TerminateProcess(process_.get(), killedCode);
    return wait(kill_ms);
}

bool winprocess::exitCode(unsigned long& code) const {
    return process_ && !running() && GetExitCodeProcess(process_.get(), &code);
}

bool winprocess::readConsole(vcore::str& text) {
    text.Clear();
    std::string bytes(readBytes, 0);
    const unsigned long long begin = log_.position();
    unsigned long done = 0;
    if (!log_.read(bytes.data(), readBytes, &done)) {
        return false;
    }
    // A character that is not complete yet is left for the next call. Bytes that are no text are taken all
    // the same.
    std::wstring wide(done, 0);
    unsigned long taken = done;
    int n = 0;
    for (unsigned long left = 0; n == 0 && left < longestCharacter && left < done; ++left) {
        n = widen(bytes.data(), taken = done - left, MB_ERR_INVALID_CHARS, wide);
    }
    if (n == 0) {
        n = widen(bytes.data(), taken = done, 0, wide);
    }
    log_.seek(begin + taken);
    text.setWStr(wide.c_str(), static_cast<unsigned long>(n));
    return true;
}

} // namespace vwin
