// What Winlogon waits for before anybody can log on.

#include <memory>

#include "Machine.h"
#include "Stopwatch.h"

namespace {

/// Attach, negotiation and initialisation, as the first instance since the machine started.
void Start(benchmark::State& state, bool bRecommended)
{
    Configure(static_cast<int>(state.range(0)), MASK_NOTHING);
    if (bRecommended) {
        SetRecommended();
    }
    for ([[maybe_unused]] auto step : state) {
        SetNumber(VOLATILE_KEY, INSTANCE_COUNT_VALUE, 0);
        std::unique_ptr<CWinlogon> pWinlogon;
        const CStopwatch watch(state);
        pWinlogon = std::make_unique<CWinlogon>();
    }
}

/// Loads the same plugins and the same GINA, and in the place of the library one that does nothing.
void BareLoad(benchmark::State& state)
{
    for ([[maybe_unused]] auto step : state) {
        std::vector<HMODULE> loaded;
        {
            const CStopwatch watch(state);
            loaded.push_back(LoadWithExports(CopyOf('h', 0), false));
            for (int n = 1; n <= state.range(0); ++n) {
                loaded.push_back(LoadWithExports(CopyOf('p', n), true));
            }
            loaded.push_back(LoadWithExports(BENCH_GINA, false));
        }
        for (const HMODULE hModule : loaded) {
            FreeLibrary(hModule);
        }
    }
}

BENCHMARK_CAPTURE(Start, plain, false)->Arg(1)->Arg(16)->Arg(32)->UseManualTime();
BENCHMARK_CAPTURE(Start, recommended, true)->Arg(16)->UseManualTime();
BENCHMARK(BareLoad)->Arg(1)->Arg(16)->Arg(32)->UseManualTime();

} // namespace
