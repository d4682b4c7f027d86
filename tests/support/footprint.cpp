#include "tests/support/footprint.h"

#include "marvo.h"

#include <psapi.h>
#include <tlhelp32.h>

static int openHandles() {
    int count = 0;
    for (ULONG_PTR value = 4; value < 0x4000; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

Footprint footprint() {
    Footprint now;
    now.handles = openHandles();
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        now.threads += entry.th32OwnerProcessID == GetCurrentProcessId();
    }
    CloseHandle(snapshot);
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    now.bytes = memory.PagefileUsage;
    return now;
}

int systemsHandlesPerCycle(int graphs) {
    constexpr int rounds = 10;
    const auto round = [graphs] {
        for (int i = 0; i < graphs; ++i) {
            vwin::com_<IGraphBuilder>().create(CLSID_FilterGraph);
        }
        vwin::com_<ICreateDevEnum> devices;
        vwin::com_<IEnumMoniker> list;
        vwin::com_<IMoniker> camera;
        devices.create(CLSID_SystemDeviceEnum);
        devices->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, list.put(), 0);
        list->Next(1, camera.put(), nullptr);
    };
    round();
    const int before = openHandles();
    for (int i = 0; i < rounds; ++i) {
        round();
    }
    return (openHandles() - before + rounds - 1) / rounds;
}
