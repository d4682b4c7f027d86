#include "bench/statistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>

double percentile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(part * static_cast<double>(values.size()));
    const auto index = static_cast<size_t>(std::max(rank - 1, 0.0));
    return values[std::min(index, values.size() - 1)];
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double mean(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}
