// Settings.
#include "marvo/core/text.h"
#include "marvo/flat/engine.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/settings.h"
#include "marvo/flat/structure.h"
#include "marvo/flat/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

using namespace flat;

namespace {

const Setting& settingOf(const char* name) {
    wideText(name, "name of a setting");
    const auto all = settings();
    const auto row = std::find_if(all.begin(), all.end(),
                                  [name](const Setting& known) { return std::string(known.name) == name; });
    if (row == all.end()) {
        fail(MARVO_E_UNKNOWN, std::string("There is no setting '") + name + "'.");
    }
    return *row;
}

void needNumber(const Setting& setting) {
    if (!setting.number) {
        fail(MARVO_E_ARGUMENT, std::string("The setting '") + setting.name + "' is a text.");
    }
}

void setNumber(const Setting& setting, marvo_i64 value) {
    if (value < setting.least || value > setting.most) {
        fail(MARVO_E_RANGE, vcore::format("The setting '%s' goes from %lld to %lld; %lld is out of that.",
                                          setting.name, setting.least, setting.most, value));
    }
    const Engine::Command command;
    setting.setNumber(value);
}

struct FlagText {
    const char* text;
    marvo_i64 value;
};
constexpr FlagText flagTexts[] = {{"yes", 1}, {"no", 0}, {"on", 1}, {"off", 0}, {"true", 1}, {"false", 0}};

/// The number that a text stands for.
marvo_i64 numberIn(const Setting& setting, const std::string& text) {
    for (const FlagText& flag : flagTexts) {
        if (setting.type == MARVO_SETTING_FLAG && text == flag.text) {
            return flag.value;
        }
    }
    char* end = nullptr;
    errno = 0;
    const marvo_i64 value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE) {
        fail(MARVO_E_ARGUMENT, "The setting '" + std::string(setting.name) + "' is a number; '" + text +
                                   "' is none that fits.");
    }
    return value;
}

} // namespace

int MARVO_CALL marvo_setting_count(marvo_u32* count) {
    return guarded([&] {
        if (!count) {
            fail(MARVO_E_ARGUMENT, "There is no place for the number: it is null.");
        }
        *count = static_cast<marvo_u32>(settings().size());
    });
}

int MARVO_CALL marvo_setting_describe(marvo_u32 number, marvo_setting_info* info) {
    return guarded([&] {
        Answer<marvo_setting_info> to(info, "description");
        if (number >= settings().size()) {
            fail(MARVO_E_RANGE, vcore::format("There is no setting number %u: there are %u.", number,
                                              static_cast<unsigned>(settings().size())));
        }
        const Setting& setting = settings()[number];
        to->type = setting.type;
        to->least = setting.least;
        to->most = setting.most;
        putText(to->name, sizeof to->name, setting.name);
        putText(to->meaning, sizeof to->meaning, setting.meaning);
        to.give();
    });
}

int MARVO_CALL marvo_setting_get_number(const char* name, marvo_i64* value) {
    return guarded([&] {
        const Setting& setting = settingOf(name);
        needNumber(setting);
        if (!value) {
            fail(MARVO_E_ARGUMENT, "There is no place for the value: it is null.");
        }
        const Engine::Command command;
        *value = setting.number();
    });
}

int MARVO_CALL marvo_setting_set_number(const char* name, marvo_i64 value) {
    return guarded([&] {
        const Setting& setting = settingOf(name);
        needNumber(setting);
        setNumber(setting, value);
    });
}

int MARVO_CALL marvo_setting_get_text(const char* name, char* buffer, marvo_u32 capacity, marvo_u32* needed) {
    return guarded([&] {
        const Setting& setting = settingOf(name);
        const std::string text = [&setting] {
            const Engine::Command command;
            if (setting.text) {
                return utf8(setting.text());
            }
            const marvo_i64 value = setting.number();
            return setting.type == MARVO_SETTING_FLAG ? std::string(value != 0 ? "yes" : "no")
                                                      : std::to_string(value);
        }();
        answer(text, buffer, capacity, needed);
    });
}

int MARVO_CALL marvo_setting_set_text(const char* name, const char* value) {
    return guarded([&] {
        const Setting& setting = settingOf(name);
        const std::wstring text = wideText(value, "value");
        if (setting.number) {
            setNumber(setting, numberIn(setting, value));
            return;
        }
        if (text.empty()) {
            fail(MARVO_E_ARGUMENT, std::string("The setting '") + setting.name + "' needs a name of a file.");
        }
        const Engine::Command command;
        setting.setText(text.c_str());
    });
}
