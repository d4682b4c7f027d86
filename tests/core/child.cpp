// A program for the tests of processes. The first argument says what it does.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int count, char** arguments) {
    const std::string task = count > 1 ? arguments[1] : "";
    const int number = count > 2 ? std::atoi(arguments[2]) : 0;
    if (task == "write") { // so many lines, every tenth of them as an error
        for (int i = 0; i < number; ++i) {
            std::fprintf(i % 10 ? stdout : stderr, "line %06d\n", i);
        }
    } else if (task == "echo") {
        for (int i = 2; i < count; ++i) {
            std::printf("<%s>", arguments[i]);
        }
        return std::getchar() == EOF ? count : -2;
    } else if (task == "set") { // signals an event that it inherited
        return SetEvent(reinterpret_cast<HANDLE>(static_cast<INT_PTR>(number))) ? 0 : 1;
    } else if (task == "sleep") {
        std::printf("ready");
        std::fflush(stdout);
        Sleep(static_cast<DWORD>(number));
    }
    return 7;
}
