#include "marvo/frontend/settings_files.h"

#include "marvo/frontend/setting_table.h"

#include <string_view>

namespace frontend {

namespace {

void assign(bool& target, const vcore::var& value) {
    target = value.getB();
}

void assign(int& target, const vcore::var& value) {
    target = value.getI();
}

void assign(vcore::str& target, const vcore::var& value) {
    target = value.getS();
}

void assign(std::optional<unsigned long>& target, const vcore::var& value) {
    target = static_cast<unsigned long>(value.getI());
}

} // namespace

SettingsFiles::SettingsFiles() : marvo_(L"marvo.ini"), dv_(L"dv.ini"), video_(L"video.ini") {}

const vcore::iniFile& SettingsFiles::fileOf(const wchar_t* key) const {
    return std::wstring_view(key).starts_with(L"video.") ? video_ : dv_;
}

void SettingsFiles::readInto(Settings& settings) const {
    for (const SettingRow& row : settingTable) {
        const vcore::iniFile& file = fileOf(row.key);
        if (file.defined(row.key)) {
            std::visit([&](auto target) { assign(settings.*target, file.get(row.key)); }, row.target);
        }
    }
    // "dv.file" is the file for both.
    settings.playFile = settings.recFile;
}

} // namespace frontend
