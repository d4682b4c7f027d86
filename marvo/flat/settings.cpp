#include "marvo/flat/settings.h"

#include "marvo/frontend/front_end.h"
#include "marvo/frontend/setting_table.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace flat {

namespace {

using frontend::Settings;

constexpr marvo_i64 mostFrames = 0xFFFFFFFF;

/// The value of a member that is a flag or a number.
template <auto Member>
marvo_i64 numberOf() {
    return static_cast<marvo_i64>(dvFE.settings().*Member);
}
template <auto Member>
std::wstring textOf() {
    return (dvFE.settings().*Member).oleStr();
}

/// Those that the table does not know have a meaning of their own here.
constexpr Setting rows[] = {
    {"dv.control", MARVO_SETTING_FLAG, 0, 1, nullptr, numberOf<&Settings::control>,
     [](marvo_i64 value) { dvFE.setControl(value != 0); }, nullptr, nullptr},
    {"dv.logging", MARVO_SETTING_FLAG, 0, 1, nullptr, numberOf<&Settings::logging>,
     [](marvo_i64 value) { dvFE.setLogging(value != 0); }, nullptr, nullptr},
    {"dv.maxfilesize", MARVO_SETTING_NUMBER, 0, 0, nullptr,
     []() -> marvo_i64 { return std::max(dvFE.recFilter().store().maxFilesize(), -1ll); },
     [](marvo_i64 value) { dvFE.recFilter().store().setMaxFilesize(value); }, nullptr, nullptr},
    {"dv.playdelay", MARVO_SETTING_NUMBER, 0, 0, nullptr, numberOf<&Settings::playDelay_ms>,
     [](marvo_i64 value) { dvFE.setPlayDelay(static_cast<int>(value)); }, nullptr, nullptr},
    {"dv.input", MARVO_SETTING_NUMBER, 0, 0, nullptr, numberOf<&Settings::input>,
     [](marvo_i64 value) { dvFE.setInput(static_cast<int>(value)); }, nullptr, nullptr},
    {"dv.reconnect", MARVO_SETTING_FLAG, 0, 1, nullptr, numberOf<&Settings::reconnect>,
     [](marvo_i64 value) { dvFE.setReconnect(value != 0); }, nullptr, nullptr},
    {"dv.file", MARVO_SETTING_TEXT, 0, 0, nullptr, nullptr, nullptr, textOf<&Settings::recFile>,
     [](const wchar_t* value) {
         dvFE.setRecFile(value);
         dvFE.setPlayFile(value);
     }},
    {"video.deinterlace", MARVO_SETTING_FLAG, 0, 1, nullptr, numberOf<&Settings::deinterlace>,
     [](marvo_i64 value) { dvFE.setDeinterlace(value != 0); }, nullptr, nullptr},
    {"video.filter", MARVO_SETTING_NUMBER, 0, 0, nullptr, numberOf<&Settings::videoFilter>,
     [](marvo_i64 value) { dvFE.setVideoFilter(static_cast<int>(value)); }, nullptr, nullptr},
    {"engine.recfile", MARVO_SETTING_TEXT, 0, 0, "file to record into when none is named", nullptr, nullptr,
     textOf<&Settings::recFile>, [](const wchar_t* value) { dvFE.setRecFile(value); }},
    {"engine.playfile", MARVO_SETTING_TEXT, 0, 0, "file to replay from when none is named", nullptr, nullptr,
     textOf<&Settings::playFile>, [](const wchar_t* value) { dvFE.setPlayFile(value); }},
    {"engine.recframes", MARVO_SETTING_NUMBER, 1, mostFrames,
     "frames of the ring of the newest frames, for the next marvo_init", numberOf<&Settings::maxRecFrames>,
     [](marvo_i64 value) { dvFE.setMaxRecFrames(static_cast<unsigned long>(value)); }, nullptr, nullptr},
    {"engine.playframes", MARVO_SETTING_NUMBER, 1, mostFrames,
     "frames that a replay may hold in memory, for the next replay", numberOf<&Settings::maxPlayFrames>,
     [](marvo_i64 value) { dvFE.setMaxPlayFrames(static_cast<unsigned long>(value)); }, nullptr, nullptr},
};

Setting completed(Setting setting) {
    const std::string_view name = setting.name;
    for (const frontend::SettingRow& row : frontend::settingTable) {
        const std::wstring_view key = row.key;
        if (std::equal(key.begin(), key.end(), name.begin(), name.end())) {
            setting.meaning = row.meaning;
            if (setting.type == MARVO_SETTING_NUMBER) {
                setting.least = row.least;
                setting.most = row.most;
            }
        }
    }
    return setting;
}

} // namespace

std::span<const Setting> settings() {
    static const std::vector<Setting> all = [] {
        std::vector<Setting> made;
        std::transform(std::begin(rows), std::end(rows), std::back_inserter(made), completed);
        return made;
    }();
    return all;
}

} // namespace flat
