/* A host in the calling conventions and object format of Microsoft's compiler, without any of its libraries:
 * prints the version, what it finds in a recording and what a refused call says. Named by the command line.
 */
#include "marvo_c.h"

__declspec(dllimport) void __stdcall ExitProcess(unsigned code);
__declspec(dllimport) void* __stdcall GetStdHandle(unsigned which);
__declspec(dllimport) int __stdcall WriteFile(void* file, const void* data, unsigned bytes, unsigned* written,
                                              void* overlapped);

static void say(const char* text) {
    unsigned bytes = 0, written;
    while (text[bytes]) {
        ++bytes;
    }
    WriteFile(GetStdHandle((unsigned)-11), text, bytes, &written, 0);
    WriteFile(GetStdHandle((unsigned)-11), "\n", 1, &written, 0);
}

static void number(const char* what, marvo_u32 value) {
    char text[64], digits[12];
    int length = 0, count = 0;
    for (; what[length]; ++length) {
        text[length] = what[length];
    }
    do {
        digits[count++] = (char)('0' + value % 10);
    } while (value /= 10);
    while (count > 0) {
        text[length++] = digits[--count];
    }
    text[length] = 0;
    say(text);
}

static int MARVO_CALL progress(void* user, marvo_u64 done, marvo_u64 all) {
    *(int*)user += done <= all;
    return 0;
}

void start(void) {
    static marvo_recording_info info;
    static marvo_verify_result verified;
    static int calls;
    marvo_reader* reader;
    say(marvo_version_text());
    number("refused ", (marvo_u32)marvo_reader_open("missing.dv", &reader));
    say(marvo_last_error());
    info.size = sizeof info;
    verified.size = sizeof verified;
    number("open ", (marvo_u32)marvo_reader_open("match.dv", &reader));
    number("info ", (marvo_u32)marvo_reader_info(reader, &info));
    number("frames ", (marvo_u32)info.frames);
    number("close ", (marvo_u32)marvo_reader_close(reader));
    number("verify ", (marvo_u32)marvo_verify("match.dv", 0, progress, &calls, &verified));
    number("verified ", (marvo_u32)verified.frames);
    number("called ", calls > 0);
    ExitProcess(0);
}
