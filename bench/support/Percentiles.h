#pragma once

// The p50 and p99 of benchmark samples.

#include <algorithm>
#include <utility>
#include <vector>

namespace corvane::test {

inline std::pair<double, double> p50p99(std::vector<double> samples)
{
    if (samples.empty())
        return {0, 0};
    std::sort(samples.begin(), samples.end());
    const size_t last = samples.size() - 1;
    return {samples[samples.size() / 2],
            samples[std::min(last, size_t(0.99 * double(samples.size())))]};
}

} // namespace corvane::test
