#ifndef TARN_BENCH_MEDIAN_H
#define TARN_BENCH_MEDIAN_H

#include <algorithm>
#include <vector>

// The middle value of a non-empty list (the mean of the two middle ones
// for an even count).
inline double median_of(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t half = values.size() / 2;
    return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

#endif
