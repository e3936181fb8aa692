// Winlogon's calls, and the statements of the trace log on their way.

#include <benchmark/benchmark.h>

#include "Machine.h"
#include "TraceStatements.h"

namespace {

void Call(benchmark::State& state, DWORD dwMask, bool bRecommended)
{
    Configure(static_cast<int>(state.range(0)), dwMask);
    if (bRecommended) {
        SetRecommended();
    }
    const CWinlogon winlogon;
    for ([[maybe_unused]] auto step : state) {
        Require(winlogon.IsLockOk(), "a call");
    }
}

void Hook(benchmark::State& state)
{
    const CHooks hooks(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(hooks.IsLockOk());
    }
}

/// What nobody can do without who keeps no log file open: opens it, appends a line, and closes it.
void Append(benchmark::State& state)
{
    constexpr char LINE[] =
        "Fri May 14 21:06:44 2004 LUM_GINA: [ENTRY] CGinaObject::IsLockOk, ( 40 ) c.cpp\r\n";
    Configure(0, MASK_NOTHING);
    for ([[maybe_unused]] auto step : state) {
        DWORD cb = 0;
        const HANDLE hFile = CreateFileW(LOG_FILE, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        Require(WriteFile(hFile, LINE, sizeof(LINE) - 1, &cb, nullptr), "an appended line");
        CloseHandle(hFile);
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
    WCHAR szText[NAME_CAPACITY];
    for ([[maybe_unused]] auto step : state) {
        LookUp(LUM_GINA_MTM, MASK_VALUE, szText);
    }
}

void Query(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    HKEY hKey = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, LUM_GINA_MTM, 0, KEY_READ, &hKey);
    for ([[maybe_unused]] auto step : state) {
        DWORD dwMask = 0;
        DWORD cbMask = sizeof(dwMask);
        RegQueryValueExW(hKey, MASK_VALUE, nullptr, nullptr, reinterpret_cast<BYTE*>(&dwMask), &cbMask);
    }
    RegCloseKey(hKey);
}

BENCHMARK_CAPTURE(Call, masked, MASK_NOTHING, false)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK_CAPTURE(Call, recommended, MASK_NOTHING, true)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(Call, traced, MASK_ALL, false)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK(Hook)->Arg(0)->Arg(1)->Arg(2)->Arg(8)->Arg(32)->UseRealTime();
BENCHMARK(Append)->UseRealTime();
BENCHMARK(Statement)->UseRealTime();
BENCHMARK(Lookup)->UseRealTime();
BENCHMARK(Query)->UseRealTime();

} // namespace
