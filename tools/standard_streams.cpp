#include "tools/standard_streams.h"

#include "tools/failure.h"
#include "tools/interruption.h"
#include "tools/text.h"

#include "marvo/core/disk_file.h"

#include <vector>

namespace dvrec {

namespace {

/// A temporary file with what came from the standard input.
class SpooledInput {
public:
    SpooledInput() : input_(GetStdHandle(STD_INPUT_HANDLE)) {
        const DWORD type = GetFileType(input_);
        if (type != FILE_TYPE_PIPE && type != FILE_TYPE_DISK) {
            throw Failure{ExitStatus::cannotRead,
                          "'-' reads what another program writes or a file holds, and the standard input is "
                          "neither: use a pipe, or '<'."};
        }
        wchar_t folder[MAX_PATH + 1];
        const DWORD length = GetTempPathW(MAX_PATH + 1, folder);
        const std::wstring name =
            std::wstring(folder, length) + L"dvrec-" + std::to_wstring(GetCurrentProcessId()) + L".tmp";
        vcore::handle file =
            vcore::openDiskFile(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, vcore::DiskFile::emptied);
        if (!file) {
            refuse(name);
        }
        path_ = name;
        try {
            copyTo(file.get());
        } catch (...) {
            file.reset();
            DeleteFileW(path_.c_str());
            throw;
        }
    }
    ~SpooledInput() { DeleteFileW(path_.c_str()); }
    SpooledInput(const SpooledInput&) = delete;
    SpooledInput& operator=(const SpooledInput&) = delete;

    const std::wstring& path() const { return path_; }

private:
    [[noreturn]] static void refuse(const std::wstring& name) {
        throw Failure{ExitStatus::cannotRead, "The standard input cannot be kept in the temporary file " +
                                                  quoted(name) + ": " + systemMessage(GetLastError()) + "."};
    }

    void copyTo(HANDLE file) const {
        constexpr DWORD chunk = 0x40000;
        std::vector<unsigned char> bytes(chunk);
        DWORD got = 0;
        // A pipe that its writer has left ends with an error.
        while (ReadFile(input_, bytes.data(), chunk, &got, nullptr) && got > 0) {
            checkInterruption();
            DWORD written = 0;
            if (!WriteFile(file, bytes.data(), got, &written, nullptr) || written != got) {
                refuse(path_);
            }
        }
        checkInterruption();
    }

    const HANDLE input_;
    std::wstring path_;
};

} // namespace

bool isPipe(const std::wstring& name) {
    return name == L"-";
}

const std::wstring& inputPath(const std::wstring& name) {
    if (!isPipe(name)) {
        return name;
    }
    static const SpooledInput spooled;
    return spooled.path();
}

bool PipeWriter::write(recording::RecordBuffer& buffer) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    for (DWORD done = 0; done < buffer.frameBytes();) {
        DWORD written = 0;
        if (!WriteFile(output, buffer.frame() + done, buffer.frameBytes() - done, &written, nullptr) ||
            written == 0) {
            systemError_ = GetLastError();
            return false;
        }
        done += written;
    }
    return true;
}

std::wstring PipeWriter::error() const {
    return systemError_ != ERROR_SUCCESS ? vcore::systemMessage(systemError_) : std::wstring();
}

void refusePipe(const std::wstring& name, const std::string& what) {
    if (isPipe(name)) {
        throw Failure{ExitStatus::usage, what + " goes into a file and not through a pipe; "
                                                "'dvrec export FILE -' writes a DV stream."};
    }
}

} // namespace dvrec
