// The chain of GINAs in the registry: what the library does at its start, and the registry monitor once a
// period.

#include <algorithm>

#include "LUMRegistry.h"
#include "Machine.h"
#include "Stopwatch.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

namespace {

constexpr WCHAR GINAS_KEY[] = TEXT("SOFTWARE\\ORX\\Test");

/// A chain of GINAs of which all but the last, msgina.dll, are known from chaining records.
class CMachine
{
public:
    explicit CMachine(benchmark::State& state)
    {
        Configure(0, MASK_NOTHING);
        for (int n = 1; n < state.range(0); ++n) {
            m_ginas.push_back(CopyOf('g', n));
            SetText(OWN_KEY, m_ginas.back(),
                    GINAS_KEY + (TEXT(",") + m_ginas.back()) + TEXT(",msgina.dll,0,0,0,0"));
        }
        Write();
    }

    /// Others turn the order around.
    void TurnAround()
    {
        std::reverse(m_ginas.begin(), m_ginas.end());
        Write();
    }

    /// What nobody can do without who follows the chain.
    void ReadBare() const
    {
        LookUp(WINLOGON_KEY, WINLOGON_GINA_DLL);
        for (const Text& gina : m_ginas) {
            LookUp(GINAS_KEY, gina.c_str());
        }
    }

    CRegistryManager Read(bool bNoRepair)
    {
        return {LUM_GINA_APP, LUM_GINA_MTM, &m_configuration, &m_winlogon, bNoRepair};
    }

private:
    void Write() const
    {
        const WCHAR* szKey = WINLOGON_KEY;
        Text name = WINLOGON_GINA_DLL;
        for (const Text& gina : m_ginas) {
            SetText(szKey, name, gina);
            szKey = GINAS_KEY;
            name = gina;
        }
        SetText(szKey, name, SYSTEM_GINA);
    }

    std::vector<Text> m_ginas;
    CWinlogonRegistry m_winlogon{LUM_GINA_APP, LUM_GINA_MTM};
    CLUMRegistry m_configuration{LUM_GINA_APP, LUM_GINA_MTM};
};

void ReadChain(benchmark::State& state)
{
    CMachine machine(state);
    for ([[maybe_unused]] auto step : state) {
        const CRegistryManager manager = machine.Read(false);
    }
}

/// A period of the registry monitor in which others have changed the chain.
void Resync(benchmark::State& state)
{
    CMachine machine(state);
    CRegistryManager manager = machine.Read(false);
    for ([[maybe_unused]] auto step : state) {
        machine.TurnAround();
        const CStopwatch watch(state);
        const CRegistryManager fresh = machine.Read(true);
        if (manager != fresh) {
            manager.ResyncWithRegistry(fresh);
        }
    }
}

void BareRead(benchmark::State& state)
{
    const CMachine machine(state);
    for ([[maybe_unused]] auto step : state) {
        machine.ReadBare();
    }
}

BENCHMARK(ReadChain)->DenseRange(1, 9)->UseRealTime();
BENCHMARK(Resync)->DenseRange(1, 9)->UseManualTime();
BENCHMARK(BareRead)->DenseRange(1, 9)->UseRealTime();

} // namespace
