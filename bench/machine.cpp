#include "bench/machine.h"

#include "marvo.h"

#include <cstdio>

namespace {

std::string processorName() {
    char name[128] = "";
    DWORD size = sizeof(name);
    RegGetValueA(HKEY_LOCAL_MACHINE, "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0",
                 "ProcessorNameString", RRF_RT_REG_SZ, nullptr, name, &size);
    return name;
}

std::string systemName() {
    using WineVersion = const char*(__cdecl*)();
    const auto version = reinterpret_cast<WineVersion>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version")));
    return version ? std::string("Wine ") + version() : "Windows";
}

std::string localTime() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char text[32];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond);
    return text;
}

} // namespace

Machine::Machine()
    : cores(vwin::winthread::processorCount()), processor(processorName()), system(systemName()),
      target(sizeof(void*) == 4 ? "win32" : "win64"), date(localTime()) {}
