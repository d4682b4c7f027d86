// What is written to the registry. The engine's tests find, make and unload what is registered.
#include "collector.h"

#include "devices/camera.h"
#include "devices/decoder.h"
#include "devices/registration.h"
#include "devices/splitter.h"

using namespace device_tests;

namespace {

class registration_test : public device_test {};

std::wstring server_key(const CLSID& clsid) {
    WCHAR text[40];
    StringFromGUID2(clsid, text, 40);
    return std::wstring(L"CLSID\\") + text + L"\\InprocServer32";
}

/// The file name of the module that serves a class.
std::wstring server(const CLSID& clsid) {
    WCHAR text[MAX_PATH] = L"";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CLASSES_ROOT, server_key(clsid).c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text, &size);
    return std::filesystem::path(text).filename().wstring();
}

} // namespace

TEST_F(registration_test, leaves_the_systems_own_filters_alone) {
    // A registry of its own, in which the system has a splitter but no decoder.
    const wchar_t* const place = L"Software\\devices-registration-test";
    const auto mapper = make<IFilterMapper2>(CLSID_FilterMapper2, IID_IFilterMapper2); // keeps its module
    HKEY key;
    ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, place, &key), ERROR_SUCCESS);
    ASSERT_EQ(RegOverridePredefKey(HKEY_CLASSES_ROOT, key), ERROR_SUCCESS);
    RegSetKeyValueW(HKEY_CLASSES_ROOT, server_key(devices::splitter::clsid).c_str(), nullptr, REG_SZ,
                    L"C:\\windows\\system32\\qdv.dll", sizeof(WCHAR) * 29);
    for (const bool added : {true, false}) {
        EXPECT_EQ(added ? devices::registration::add() : devices::registration::remove(), S_OK);
        EXPECT_EQ(server(devices::splitter::clsid), L"qdv.dll");
        for (const CLSID& ours : {devices::decoder::clsid, devices::camera::clsid}) {
            EXPECT_EQ(server(ours), added ? L"marvo-tests-devices.exe" : L"");
        }
    }
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, place);
    RegCloseKey(key);
}
