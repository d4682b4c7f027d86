#include "devices/registration.h"

#include "devices/camera.h"
#include "devices/com_ref.h"
#include "devices/decoder.h"
#include "devices/splitter.h"

#include <dshow.h>

#include <cwchar>
#include <string>

namespace devices {

namespace {

const unsigned most_cameras = 16;

/// COM for the length of a block, whatever the caller has set up.
class com_block {
public:
    com_block() : result_(CoInitialize(nullptr)) {}
    ~com_block() {
        if (SUCCEEDED(result_)) {
            CoUninitialize();
        }
    }
    com_block(const com_block&) = delete;
    com_block& operator=(const com_block&) = delete;

private:
    const HRESULT result_;
};

/// What one filter is registered with.
struct filter_entry {
    const CLSID& clsid;
    const wchar_t* name;
    const GUID& input_major;
};

const filter_entry system_filters[] = {
    {splitter::clsid, L"DV Splitter", MEDIATYPE_Interleaved},
    {decoder::clsid, L"DV Video Decoder", MEDIATYPE_Video},
};

std::wstring module_path() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&registration::add), &module);
    WCHAR path[32768];
    return GetModuleFileNameW(module, path, ARRAYSIZE(path)) ? path : L"";
}

std::wstring file_name(const std::wstring& path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

std::wstring class_key(const CLSID& clsid) {
    WCHAR text[40];
    StringFromGUID2(clsid, text, ARRAYSIZE(text));
    return std::wstring(L"CLSID\\") + text;
}

/// The module a class is served from, empty when there is none.
std::wstring server_of(const CLSID& clsid) {
    WCHAR path[32768];
    DWORD bytes = sizeof path;
    const std::wstring key = class_key(clsid) + L"\\InprocServer32";
    const LONG result =
        RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, path, &bytes);
    return result == ERROR_SUCCESS ? path : L"";
}

/// Whether a class is free or ours: a module of this name, wherever it lay when it was registered.
bool may_register(const CLSID& clsid) {
    const std::wstring server = server_of(clsid);
    return server.empty() || _wcsicmp(file_name(server).c_str(), file_name(module_path()).c_str()) == 0;
}

HRESULT set_text(const std::wstring& key, const wchar_t* value, const std::wstring& text) {
    const DWORD bytes = static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR));
    return HRESULT_FROM_WIN32(
        RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), value, REG_SZ, text.c_str(), bytes));
}

HRESULT add_class(const CLSID& clsid, const wchar_t* name) {
    const std::wstring key = class_key(clsid);
    HRESULT result = set_text(key, nullptr, name);
    if (SUCCEEDED(result)) {
        result = set_text(key + L"\\InprocServer32", nullptr, module_path());
    }
    if (SUCCEEDED(result)) {
        result = set_text(key + L"\\InprocServer32", L"ThreadingModel", L"Both");
    }
    return result;
}

HRESULT make_mapper(com_ref<IFilterMapper2>& mapper) {
    return CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                            reinterpret_cast<void**>(mapper.put()));
}

/// The registered name of the n-th camera, which is also its key in the category.
std::wstring camera_name(unsigned number) {
    return number == 0 ? camera::friendly_name : camera::friendly_name + (L" " + std::to_wstring(number + 1));
}

HRESULT add_cameras(IFilterMapper2& mapper) {
    const REGPINTYPES types[] = {{&MEDIATYPE_Interleaved, &MEDIASUBTYPE_dvsd}};
    REGFILTERPINS2 pin{};
    pin.dwFlags = REG_PINFLAG_B_OUTPUT;
    pin.nMediaTypes = 1;
    pin.lpMediaType = types;
    REGFILTER2 entry{};
    entry.dwVersion = 2;
    entry.dwMerit = MERIT_DO_NOT_USE; // a graph builder must not take it by itself
    entry.cPins2 = 1;
    entry.rgPins2 = &pin;

    HRESULT result = add_class(camera::clsid, camera::friendly_name);
    const std::wstring config = camera_config::location();
    const bool configured = GetFileAttributesW(config.c_str()) != INVALID_FILE_ATTRIBUTES;
    const unsigned count = configured ? camera_config::load(config).devices : 1;
    for (unsigned number = 0; number < most_cameras; ++number) {
        const std::wstring name = camera_name(number);
        mapper.UnregisterFilter(&CLSID_VideoInputDeviceCategory, name.c_str(), camera::clsid);
        if (number < count && SUCCEEDED(result)) {
            result = mapper.RegisterFilter(camera::clsid, name.c_str(), nullptr,
                                           &CLSID_VideoInputDeviceCategory, name.c_str(), &entry);
        }
    }
    return result;
}

HRESULT add_filter(IFilterMapper2& mapper, const filter_entry& filter) {
    const REGPINTYPES types[] = {{&filter.input_major, &MEDIASUBTYPE_dvsd}};
    REGFILTERPINS2 pins[2]{};
    pins[0].nMediaTypes = 1;
    pins[0].lpMediaType = types;
    pins[1].dwFlags = REG_PINFLAG_B_OUTPUT;
    REGFILTER2 entry{};
    entry.dwVersion = 2;
    entry.dwMerit = MERIT_NORMAL;
    entry.cPins2 = 2;
    entry.rgPins2 = pins;
    const HRESULT result = add_class(filter.clsid, filter.name);
    return FAILED(result) ? result
                          : mapper.RegisterFilter(filter.clsid, filter.name, nullptr,
                                                  &CLSID_LegacyAmFilterCategory, nullptr, &entry);
}

} // namespace

HRESULT registration::add() {
    const com_block com;
    com_ref<IFilterMapper2> mapper;
    HRESULT result = make_mapper(mapper);
    if (SUCCEEDED(result)) {
        result = add_cameras(*mapper.get());
    }
    for (const filter_entry& filter : system_filters) {
        if (SUCCEEDED(result) && may_register(filter.clsid)) {
            result = add_filter(*mapper.get(), filter);
        }
    }
    return result;
}

HRESULT registration::remove() {
    const com_block com;
    com_ref<IFilterMapper2> mapper;
    const HRESULT result = make_mapper(mapper);
    if (FAILED(result)) {
        return result;
    }
    for (unsigned number = 0; number < most_cameras; ++number) {
        mapper->UnregisterFilter(&CLSID_VideoInputDeviceCategory, camera_name(number).c_str(), camera::clsid);
    }
    RegDeleteTreeW(HKEY_CLASSES_ROOT, class_key(camera::clsid).c_str());
    for (const filter_entry& filter : system_filters) {
        if (!may_register(filter.clsid)) {
            continue;
        }
        mapper->UnregisterFilter(&CLSID_LegacyAmFilterCategory, nullptr, filter.clsid);
        RegDeleteTreeW(HKEY_CLASSES_ROOT, class_key(filter.clsid).c_str());
    }
    return S_OK;
}

} // namespace devices
