/// @file
/// The figures, as a table and as JSON.
#pragma once

#include <optional>
#include <string>
#include <vector>

/// What a figure has to be.
class Target {
public:
    static Target atLeast(double limit) { return {limit, true}; }
    static Target atMost(double limit) { return {limit, false}; }

    bool metBy(double value) const { return lowest_ ? value >= limit_ : value <= limit_; }
    /// As ">= 0.8".
    std::string text() const;

private:
    Target(double limit, bool lowest) : limit_(limit), lowest_(lowest) {}

    double limit_;
    bool lowest_;
};

/// The figures measured, as a table and as JSON.
class Report {
public:
    /// Names the group that the following rows belong to.
    void beginGroup(const char* name) { group_ = name; }

    /// Adds a figure; one without a target only informs. The note says what the figure means or rests on.
    void add(const std::string& name, double value, const char* unit, std::optional<Target> target = {},
             const std::string& note = {});

    /// The group could not be measured, which counts as a missed target.
    void notMeasured(const std::string& reason);

    bool allMet() const;
    /// To standard output, with the rows that missed their targets once more at the end.
    void print() const;
    /// Makes the folder when there is none. False when the file cannot be written.
    bool write(const std::string& file, bool quick) const;

private:
    struct Row {
        std::string group;
        std::string name;
        std::optional<double> value;
        std::string unit;
        std::optional<Target> target;
        std::string note;

        /// Nothing for a row that only informs.
        std::optional<bool> met() const;
    };

    static void printRow(const Row& row);

    std::string group_;
    std::vector<Row> rows_;
};
