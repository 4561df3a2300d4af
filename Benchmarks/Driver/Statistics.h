// Order statistics of a few measured values, of which there must be at least one.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Benchmarks {

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// The smallest value that at least that part of all values does not exceed.
inline double percentile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    const auto rank = static_cast<std::size_t>(std::ceil(part * static_cast<double>(values.size())));
    return values[std::max<std::size_t>(rank, 1) - 1];
}

}  // namespace Benchmarks
