#include "marvo/com/com_fg.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// A capture device in the system's list, made from a filter class that every system has. The key sorts
/// behind those of other devices, whose numbers so stay as they are.
class ListedDevice {
public:
    ListedDevice(wchar_t last, const wchar_t* friendlyName)
        : key_(std::wstring(L"CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance\\~marvo test ") +
               last) {
        set(L"FriendlyName", friendlyName);
        set(L"CLSID", L"{70E102B0-5556-11CE-97C0-00AA0055595A}");
    }
    ~ListedDevice() { RegDeleteTreeW(HKEY_CLASSES_ROOT, key_.c_str()); }

private:
    void set(const wchar_t* name, const wchar_t* value) {
        const DWORD bytes = static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t));
        RegSetKeyValueW(HKEY_CLASSES_ROOT, key_.c_str(), name, REG_SZ, value, bytes);
    }

    std::wstring key_;
};

} // namespace

TEST(CaptureDevice, IsSelectedByNumberOrByFriendlyName) {
    const int others = vwin::com_fg::sourceCount();
    const ListedDevice first(L'1', L"Marvo Big Camera");
    const ListedDevice second(L'2', L"Marvo Big");
    ASSERT_EQ(vwin::com_fg::sourceCount(), others + 2);
    const std::wstring number = std::to_wstring(others + 1);

    const std::pair<std::wstring, bool> cases[] = {
        {L"input" + number, true}, {L"input0x" + number, others + 1 < 10},
        {L"input", true},          {L"input -3", true},
        {L"inputs", true},         {L"input99999", false},
        {L"input0xFFFF", false},   {L"input:marvo big", true},
        {L"input#BIG CAM", true},  {L"input=marvo bigger", false},
        {L"Input0", false},        {L"no such file.avi", false}};
    vwin::com_fg graph;
    ASSERT_TRUE(graph.init(true));
    for (const auto& [source, found] : cases) {
        vwin::com_filter filter;
        EXPECT_EQ(graph.addSource(source.c_str(), filter, L"dvSource") && filter, found) << source.c_str();
        filter.destroy();
        EXPECT_FALSE(graph.findFilter(L"dvSource"));
    }
    vwin::com_filter filter;
    EXPECT_TRUE(graph.addFriendly(L"MARVO BIG", filter));
    EXPECT_TRUE(filter.compareName(L"Marvo Big")) << "an equal name must win over one that contains the text";
}
