#include "marvo/frontend/settings_files.h"

#include "marvo/core/text.h"
#include "marvo/frontend/setting_table.h"

#include <string>
#include <string_view>

namespace frontend {

namespace {

/// The value as a number of the row's range.
long long numberOf(const SettingRow& row, const vcore::var& value, Log& log) {
    const double number = value.getF();
    const auto least = static_cast<double>(row.least);
    if (number >= least && number <= static_cast<double>(row.most)) {
        return static_cast<long long>(number);
    }
    const long long used = number > least ? row.most : row.least;
    constexpr std::size_t longestText = 40;
    const std::wstring text(value.getS());
    log.write(vcore::format("%ls = %ls is out of range, %lld is used", row.key,
                            text.substr(0, longestText).c_str(), used)
                  .c_str(),
              false);
    return used;
}

void assign(bool& target, const SettingRow&, const vcore::var& value, Log&) {
    target = value.getB();
}

void assign(int& target, const SettingRow& row, const vcore::var& value, Log& log) {
    target = static_cast<int>(numberOf(row, value, log));
}

void assign(vcore::str& target, const SettingRow&, const vcore::var& value, Log&) {
    target = value.getS();
}

void assign(std::optional<unsigned long>& target, const SettingRow& row, const vcore::var& value, Log& log) {
    target = static_cast<unsigned long>(numberOf(row, value, log));
}

} // namespace

SettingsFiles::SettingsFiles() : marvo_(L"marvo.ini"), dv_(L"dv.ini"), video_(L"video.ini") {}

const vcore::iniFile& SettingsFiles::fileOf(const wchar_t* key) const {
    return std::wstring_view(key).starts_with(L"video.") ? video_ : dv_;
}

void SettingsFiles::readInto(Settings& settings, Log& log) const {
    for (const SettingRow& row : settingTable) {
        const vcore::iniFile& file = fileOf(row.key);
        if (file.defined(row.key)) {
            std::visit([&](auto target) { assign(settings.*target, row, file.get(row.key), log); },
                       row.target);
        }
    }
    // "dv.file" is the file for both.
    settings.playFile = settings.recFile;
}

} // namespace frontend
