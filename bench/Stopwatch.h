#pragma once

#include <chrono>

#include <benchmark/benchmark.h>

/// Counts its own life as the time of one step.
class CStopwatch
{
public:
    explicit CStopwatch(benchmark::State& state) : m_state(state) {}
    ~CStopwatch()
    {
        m_state.SetIterationTime(std::chrono::duration<double>(CClock::now() - m_start).count());
    }
    CStopwatch(const CStopwatch&) = delete;
    CStopwatch& operator=(const CStopwatch&) = delete;

private:
    using CClock = std::chrono::steady_clock;

    benchmark::State& m_state;
    const CClock::time_point m_start = CClock::now();
};
