#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

/// Measures several functions against each other. Returns the nanoseconds per call for each, as the median over the
/// rounds. All functions run in every round, so that other load on the machine affects all of them alike.
inline std::vector<double> medianNanoseconds(int rounds, int calls,
                                             const std::vector<std::function<void(int)>>& functions) {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    std::vector<std::vector<double>> samples(functions.size());
    for (int round = 0; round < rounds + 1; ++round) {
        for (std::size_t i = 0; i < functions.size(); ++i) {
            LARGE_INTEGER from;
            LARGE_INTEGER to;
            QueryPerformanceCounter(&from);
            functions[i](calls);
            QueryPerformanceCounter(&to);
            if (round > 0) {  // the first round is a warm-up
                samples[i].push_back(1e9 * static_cast<double>(to.QuadPart - from.QuadPart) /
                                     static_cast<double>(frequency.QuadPart) / calls);
            }
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& sample : samples) {
        std::nth_element(sample.begin(), sample.begin() + sample.size() / 2, sample.end());
        medians.push_back(sample[sample.size() / 2]);
    }
    return medians;
}

/// Microseconds since the system began to start this process.
inline int microsecondsSinceStart() {
    FILETIME created;
    FILETIME ignored;
    FILETIME now;
    GetProcessTimes(GetCurrentProcess(), &created, &ignored, &ignored, &ignored);
    GetSystemTimePreciseAsFileTime(&now);
    const auto ticks = [](const FILETIME& time) {
        return (std::uint64_t(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    };
    return static_cast<int>((ticks(now) - ticks(created)) / 10);
}
