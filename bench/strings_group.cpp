#include "bench/groups.h"
#include "bench/recording.h"
#include "bench/statistics.h"

#include <cstdlib>
#include <cwchar>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr size_t textLength = 1 << 20;

/// Seconds of one call.
template <class Call>
double secondsOf(Call call) {
    const Stopwatch watch;
    call();
    return watch.seconds();
}

void check(bool same) {
    if (!same) {
        throw std::runtime_error("the two kinds of string disagree");
    }
}

/// Adds what the toolkit's string costs for each second of the standard library's.
template <class Engine, class Baseline>
void addRatio(Bench& bench, const std::string& name, Engine engine, Baseline baseline) {
    bench.progress.step(name);
    const Comparison result = compare(
        bench.scaled(31, 11), [&] { return secondsOf(engine); }, [&] { return secondsOf(baseline); });
    bench.report.add(name + ", against std::wstring", 1 / result.ratio, "ratio", Target::atMost(2));
    bench.report.add(name, result.engine_s * 1e3, "ms");
}

void measureBuilding(Bench& bench) {
    size_t length = 0, standardLength = 0;
    addRatio(
        bench, "a million characters by appendChar",
        [&] {
            vcore::str text;
            for (size_t i = 0; i < textLength; ++i) {
                text.appendChar(static_cast<wchar_t>(L'a' + i % 26));
            }
            length = text.len();
        },
        [&] {
            std::wstring text;
            for (size_t i = 0; i < textLength; ++i) {
                text.push_back(static_cast<wchar_t>(L'a' + i % 26));
            }
            standardLength = text.size();
        });
    check(length == standardLength);

    const wchar_t* const pieces[] = {L"replay", L" ", L"from frame ", L"4711", L"; "};
    addRatio(
        bench, "a million characters by append of short pieces",
        [&] {
            vcore::str text;
            for (size_t i = 0; text.len() < textLength; ++i) {
                text.append(pieces[i % std::size(pieces)]);
            }
            length = text.len();
        },
        [&] {
            std::wstring text;
            for (size_t i = 0; text.size() < textLength; ++i) {
                text.append(pieces[i % std::size(pieces)]);
            }
            standardLength = text.size();
        });
    check(length == standardLength);
}

void measureSearching(Bench& bench) {
    std::wstring standard;
    while (standard.size() < textLength) {
        standard += L"in=4711 out=4712 inside ";
    }
    standard += L"in=4713";
    vcore::str text;
    text = standard.c_str();
    int place = 0;
    size_t standardPlace = 0;
    addRatio(
        bench, "finding the last words of a million characters", [&] { place = text.findStr(L"in=4713"); },
        [&] { standardPlace = standard.find(L"in=4713"); });
    check(static_cast<size_t>(place) == standardPlace);
}

void measureNarrowing(Bench& bench, const char* name, const wchar_t* words) {
    std::wstring standard;
    while (standard.size() < textLength) {
        standard += words;
    }
    vcore::str text;
    text = standard.c_str();
    const char* narrow = nullptr;
    std::vector<char> standardNarrow(standard.size() + 1);
    addRatio(
        bench, name,
        [&] {
            text.remove(static_cast<int>(text.len()) - 1, 1).appendChar(standard.back());
            narrow = text.getStr();
        },
        [&] { std::wcstombs(standardNarrow.data(), standard.c_str(), standardNarrow.size()); });
    check(std::string(narrow) == standardNarrow.data());
}

/// What loading settings cannot do without: the lines of a wide text, each cut in two; returns their number.
size_t readAndSplit(const wchar_t* name) {
    const vcore::handle file(
        CreateFileW(name, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::wstring text(GetFileSize(file.get(), nullptr) / sizeof(wchar_t), 0);
    DWORD done = 0;
    ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)), &done, nullptr);
    std::vector<std::pair<std::wstring, std::wstring>> settings;
    for (size_t start = 0, end = 0; (end = text.find(L'\n', start)) != text.npos; start = end + 1) {
        const size_t equals = text.find(L'=', start);
        if (equals < end) {
            settings.emplace_back(text.substr(start, equals - start),
                                  text.substr(equals + 1, end - equals - 1));
        }
    }
    return settings.size();
}

double loadSettings(const wchar_t* name) {
    vcore::iniFile ini(nullptr);
    return secondsOf([&] { ini.load(name); });
}

void measureSettings(Bench& bench) {
    bench.progress.step("settings");
    const TemporaryFile file(L"bench_strings.ini");
    std::vector<std::wstring> names;
    vcore::iniFile out(nullptr);
    for (int section = 0; section < 100; ++section) {
        for (int key = 0; key < 100; ++key) {
            names.push_back(L"section_" + std::to_wstring(section) + L".key_" + std::to_wstring(key));
            out.set(names.back().c_str(), std::to_wstring(key).c_str());
        }
    }
    if (!out.save(file.name())) {
        throw std::runtime_error("the settings file cannot be written");
    }
    const int rounds = bench.scaled(11, 5);
    size_t lines = 0;
    const Comparison loading = compare(
        rounds, [&] { return loadSettings(file.name()); },
        [&] { return secondsOf([&] { lines = readAndSplit(file.name()); }); });
    check(lines == names.size());
    const vcore::iniFile ini(file.name());

    constexpr size_t step = 97; // lands everywhere in the list
    size_t found = 0, standardFound = 0;
    const Comparison result = compare(
        rounds,
        [&] {
            return secondsOf([&] {
                for (size_t i = 0; i < names.size(); i += step) {
                    found += ini.get(names[i].c_str()).getI() == static_cast<int>(i % 100);
                }
            });
        },
        [&] {
            return secondsOf([&] {
                for (size_t i = 0; i < names.size(); i += step) {
                    size_t at = 0;
                    while (_wcsicmp(names[at].c_str(), names[i].c_str()) != 0) {
                        ++at;
                    }
                    standardFound += at == i;
                }
            });
        });
    check(found == standardFound);
    const double lookups = static_cast<double>((names.size() + step - 1) / step);
    bench.report.add("lookup among 10,000 settings, against a scan of the names", 1 / result.ratio, "ratio",
                     Target::atMost(1.5), "without regard to letter case");
    bench.report.add("lookup among 10,000 settings", result.engine_s / lookups * 1e6, "us");
    bench.report.add("loading 10,000 settings, against reading and splitting the lines", 1 / loading.ratio,
                     "ratio", Target::atMost(5));
    bench.report.add("loading 10,000 settings", loading.engine_s * 1e3, "ms");
}

} // namespace

void measureStrings(Bench& bench) {
    measureBuilding(bench);
    measureSearching(bench);
    measureNarrowing(bench, "the narrow form of a million ASCII characters", L"See the last action again. ");
    measureNarrowing(bench, "the narrow form of a million characters with accents",
                     L"d\u00e9j\u00e0 vu, \u00e0 bient\u00f4t ");
    measureSettings(bench);
}
