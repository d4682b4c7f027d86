#include "bench/report.h"

#include "bench/machine.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), value >= 1000 ? "%.0f" : "%.4g", value);
    return text;
}

const char* word(std::optional<bool> met) {
    return !met ? "" : *met ? "yes" : "NO";
}

template <class T>
nlohmann::ordered_json orNull(const std::optional<T>& value) {
    return value ? nlohmann::ordered_json(*value) : nullptr;
}

} // namespace

std::string Target::text() const {
    return (lowest_ ? ">= " : "<= ") + number(limit_);
}

std::optional<bool> Report::Row::met() const {
    if (!value) {
        return false;
    }
    return target ? std::optional(target->metBy(*value)) : std::nullopt;
}

void Report::add(const std::string& name, double value, const char* unit, std::optional<Target> target,
                 const std::string& note) {
    rows_.push_back({group_, name, value, unit, target, note});
}

void Report::notMeasured(const std::string& reason) {
    rows_.push_back({group_, "not measured", {}, "", {}, reason});
}

bool Report::allMet() const {
    for (const Row& row : rows_) {
        if (!row.met().value_or(true)) {
            return false;
        }
    }
    return true;
}

void Report::printRow(const Row& row) {
    std::printf("%-12s %-58s %10s %-12s %-8s %-4s %s\n", row.group.c_str(), row.name.c_str(),
                row.value ? number(*row.value).c_str() : "-", row.unit.c_str(),
                row.target ? row.target->text().c_str() : "", word(row.met()), row.note.c_str());
}

void Report::print() const {
    std::printf("%-12s %-58s %10s %-12s %-8s %-4s %s\n", "group", "figure", "value", "unit", "target", "met",
                "note");
    for (const Row& row : rows_) {
        printRow(row);
    }
    if (allMet()) {
        std::puts("\nEvery target is met.");
    } else {
        std::puts("\nMissed:");
        for (const Row& row : rows_) {
            if (!row.met().value_or(true)) {
                printRow(row);
            }
        }
    }
    std::fflush(stdout);
}

bool Report::write(const std::string& file, bool quick) const {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
    const Machine machine;
    nlohmann::ordered_json report = {{"machine",
                                      {{"cores", machine.cores},
                                       {"processor", machine.processor},
                                       {"system", machine.system},
                                       {"target", machine.target},
                                       {"date", machine.date}}},
                                     {"quick", quick},
                                     {"rows", nlohmann::ordered_json::array()}};
    for (const Row& row : rows_) {
        report["rows"].push_back(
            {{"group", row.group},
             {"name", row.name},
             {"value", orNull(row.value)},
             {"unit", row.unit},
             {"target", row.target ? nlohmann::ordered_json(row.target->text()) : nullptr},
             {"met", orNull(row.met())},
             {"note", row.note}});
    }
    std::ofstream out(file, std::ios::binary);
    out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    out.close();
    return !out.fail();
}
