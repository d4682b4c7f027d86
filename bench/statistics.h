/// @file
/// What is made of the times of many rounds.
#pragma once

#include "bench/stopwatch.h"

#include <vector>

/// The value below which the given part (0 to 1) of the values lies, by the nearest rank; the median at 0.5.
/// `values` must not be empty.
double percentile(std::vector<double> values, double part);

/// The middle value; the mean of the two middle ones of an even number. `values` must not be empty.
double median(std::vector<double> values);

/// The sum of the values divided by their number. `values` must not be empty.
double mean(const std::vector<double>& values);

/// Seconds of a baseline and of the engine for the same work, and how they compare.
struct Comparison {
    double baseline_s = 0; ///< median of the rounds
    double engine_s = 0;   ///< median of the rounds
    double ratio = 0; ///< median of baseline / engine of each pair of rounds: the engine's share of the speed
};

/// Runs engine and baseline in turn, `rounds` times each after one pair that does not count, so that other
/// load on the machine hits both. Both return the seconds they took. The engine's round comes first: a
/// baseline may repeat what it has just done.
template <class Engine, class Baseline>
Comparison compare(int rounds, Engine engine, Baseline baseline) {
    engine();
    baseline();
    std::vector<double> engines, baselines, ratios;
    for (int i = 0; i < rounds; ++i) {
        engines.push_back(engine());
        baselines.push_back(baseline());
        ratios.push_back(baselines.back() / engines.back());
    }
    return {median(baselines), median(engines), median(ratios)};
}
