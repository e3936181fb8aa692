// Winlogon's calls, and the statements of the trace log on their way.

#include <memory>

#include <benchmark/benchmark.h>

#include "Machine.h"
#include "TraceStatements.h"

namespace {

void Call(benchmark::State& state, DWORD dwMask)
{
    Configure(static_cast<int>(state.range(0)), dwMask);
    const CWinlogon winlogon(false);
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(winlogon.IsLockOk());
    }
}

void Hook(benchmark::State& state)
{
    const CHooks hooks(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(hooks.IsLockOk());
    }
}

void Statement(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    for ([[maybe_unused]] auto step : state) {
        CWarning(LUM_GINA_ORIGIN, TEXT("text"));
    }
}

void Lookup(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    for ([[maybe_unused]] auto step : state) {
        LookUp(OWN_KEY, MASK_VALUE);
    }
}

void Query(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    HKEY hKey = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, OWN_KEY, 0, KEY_READ, &hKey);
    for ([[maybe_unused]] auto step : state) {
        DWORD dwMask = 0;
        DWORD cbMask = sizeof(dwMask);
        RegQueryValueExW(hKey, MASK_VALUE, nullptr, nullptr, reinterpret_cast<BYTE*>(&dwMask), &cbMask);
    }
    RegCloseKey(hKey);
}

BENCHMARK_CAPTURE(Call, masked, MASK_NOTHING)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK_CAPTURE(Call, traced, MASK_ALL)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK(Hook)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK(Statement)->UseRealTime();
BENCHMARK(Lookup)->UseRealTime();
BENCHMARK(Query)->UseRealTime();

} // namespace
