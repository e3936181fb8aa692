// The chain of GINAs in the registry: what the library does at its start, and the registry monitor when it
// puts the chain right.

#include "LUMRegistry.h"
#include "Machine.h"
#include "Stopwatch.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

namespace {

constexpr WCHAR OTHER_GINA[] = TEXT("other.dll");

/// A machine with a chain of GINAs: the host, others that are known from chaining records, and msgina.dll. A
/// chain of one is msgina.dll alone.
class CMachine
{
public:
    explicit CMachine(const benchmark::State& state) : m_values(MakeChain(state.range(0))) {}

    /// Others put a GINA in the place of the first. The host's is no longer in the chain then, which is as
    /// long as before: the host writes its own again, all of it.
    void Disturb() const { SetText(WINLOGON_KEY, WINLOGON_GINA_DLL, OTHER_GINA); }

    void RequireOwnChain() const
    {
        for (const CValue& value : m_values) {
            WCHAR szGina[NAME_CAPACITY];
            LookUp(value.szKey, value.name.c_str(), szGina);
            Require(value.gina == szGina, "the resynchronisation");
        }
    }

    /// What nobody can do without who follows the chain.
    void ReadBare() const
    {
        WCHAR szGina[NAME_CAPACITY];
        for (const CValue& value : m_values) {
            LookUp(value.szKey, value.name.c_str(), szGina);
        }
    }

    void Write() const { Write(m_values); }

    CRegistryManager Read(bool bNoRepair)
    {
        return {LUM_GINA_APP, LUM_GINA_MTM, &m_configuration, &m_winlogon, bNoRepair};
    }

private:
    struct CValue
    {
        const WCHAR* szKey;
        Text name;
        Text gina;
    };
    using CValues = std::vector<CValue>;

    static CValues MakeChain(benchmark::IterationCount nGinas)
    {
        Configure(0, MASK_NOTHING);
        CValues values;
        const WCHAR* szKey = WINLOGON_KEY;
        Text name = WINLOGON_GINA_DLL;
        for (int n = 1; n < nGinas; ++n) {
            const bool bHost = n == 1;
            values.push_back({szKey, name, bHost ? HOST_GINA : CopyOf('g', n)});
            if (!bHost) {
                SetRecord(values.back().gina, false);
            }
            szKey = bHost ? LUM_GINA_MTM : GINAS_KEY;
            name = bHost ? PASSTHROUGH_VALUE : values.back().gina;
        }
        values.push_back({szKey, name, SYSTEM_GINA});
        SetRecord(OTHER_GINA, nGinas == 1);
        SetText(GINAS_KEY, OTHER_GINA, nGinas == 1 ? TEXT("") : values[1].gina);
        Write(values);
        return values;
    }

    static void Write(const CValues& values)
    {
        for (const CValue& value : values) {
            SetText(value.szKey, value.name.c_str(), value.gina);
        }
    }

    // The registry is made before the objects open its keys.
    const CValues m_values;
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
        machine.Disturb();
        {
            const CStopwatch watch(state);
            const CRegistryManager fresh = machine.Read(true);
            Require(manager != fresh, "the disturbance");
            manager.ResyncWithRegistry(fresh);
        }
        machine.RequireOwnChain();
    }
}

void BareRead(benchmark::State& state)
{
    const CMachine machine(state);
    for ([[maybe_unused]] auto step : state) {
        machine.ReadBare();
    }
}

void BareResync(benchmark::State& state)
{
    const CMachine machine(state);
    for ([[maybe_unused]] auto step : state) {
        machine.ReadBare();
        machine.Write();
    }
}

BENCHMARK(ReadChain)->DenseRange(1, 9)->UseRealTime();
BENCHMARK(Resync)->DenseRange(1, 9)->UseManualTime();
BENCHMARK(BareRead)->DenseRange(1, 9)->UseRealTime();
BENCHMARK(BareResync)->DenseRange(1, 9)->UseRealTime();

} // namespace
