#include "ChainSteps.h"

#include "GinaNames.h"
#include "KeptSettings.h"
#include "Lumctl.h"
#include "chain/ChainBackup.h"
#include "chain/ChainChange.h"
#include "chain/ChainView.h"
#include "machine/SetupError.h"
#include "online/OnlineHost.h"

namespace {

/// A note: the chain as Enable found it, and then as Enable left it; empty before that. There when the
/// library was not in the chain before the installation.
constexpr WCHAR ENABLED[] = L"Enabled";
/// There when the chain could not be made what it was.
constexpr WCHAR RESCUED[] = L"Rescued";
/// There when the library was in the chain before a removal.
constexpr WCHAR WAS_ENABLED[] = L"WasEnabled";

constexpr char IN_BACKUP[] =
    ". lum_gina-before.reg or lum_gina-rescue.reg in the system directory has the chain as "
    "it was before the installation";

/// Without the lock: who holds it for ever does not keep the machine from being rescued. A change by lumctl
/// that is at work leaves a chain at each moment with which the machine starts.
CChainView FollowChain()
{
    COfflineChain chain;
    return FollowChain(chain, chain.ReadValues(), WideText());
}

/// All of the chain, to be compared.
Platform::CRegistryData ReadChain()
{
    COfflineChain chain;
    const CChainValues values = chain.ReadValues();
    const std::string text = WriteBackup(values, SafeOrder(chain, values));
    return {REG_BINARY, {text.begin(), text.end()}};
}

void SwitchMonitor(const CInstallSession& session, const WCHAR* szOnOrOff)
{
    if (!DescribeHostInService().empty()) {
        Lumctl::Run(session, {L"monitor", szOnOrOff, L"--timeout", L"120"});
    }
}

/// Without its monitor a host in service leaves the chain alone, whoever changes it before the restart. So
/// the chain is changed in the registry, which also has what others have written that the host has not seen.
void TakeOut(const CInstallSession& session)
{
    Lumctl::Run(session, {L"chain", L"disable", L"--in-service"});
}

/// Winlogon loads msgina.dll then. This is one write, after which the machine starts whatever else is wrong.
[[noreturn]] void LeaveAllGinasOut()
{
    const CValueData data = ReadValue(WinlogonPlace());
    if (IsAnythingKept()) {
        SetNote(RESCUED, MakeNumber(1));
    }
    WriteValue(WinlogonPlace(), std::nullopt);
    FlushKey(WinlogonPlace());
    throw CSetupError(
        "Winlogon's GinaDLL was " + Describe(data) +
        ". It has been deleted, so that msgina.dll is loaded: lum_gina.dll goes, and could not be "
        "taken out of the chain in any other way" +
        IN_BACKUP);
}

template <typename Step>
bool Succeeds(const CInstallSession& session, Step step)
{
    try {
        step();
        return true;
    } catch (const std::exception& error) {
        session.Log(error.what());
        return false;
    }
}

/// Throws when Winlogon's GinaDLL had to be deleted for that.
void TakeOutByAllMeans(const CInstallSession& session)
{
    Succeeds(session, [&] { SwitchMonitor(session, L"off"); });
    const bool bOut = Succeeds(session, [&] {
        // On a machine that does not start as it is, disable writes also what does not help. So it is tried
        // first.
        Lumctl::Run(session, {L"chain", L"disable", L"--in-service", L"--dry-run"});
        TakeOut(session);
    });
    if (!bOut && ChainSteps::MayBeInChain()) {
        LeaveAllGinasOut();
    }
}

} // namespace

void ChainSteps::BeginInstall()
{
    if (!IsInChain()) {
        SetNote(ENABLED, Platform::CRegistryData{REG_BINARY, {}});
    }
}

void ChainSteps::Enable(const CInstallSession& session, const WideText& backup)
{
    const bool bComes = FindNote(ENABLED).has_value();
    Lumctl::Run(session, {L"chain", L"backup", backup});
    Lumctl::Run(session, {L"chain", L"check"});
    if (bComes) {
        // From here on the chain is to be taken back whatever it is like.
        SetNote(ENABLED, ReadChain());
    }
    Lumctl::Run(session, {L"chain", L"enable"});
    if (bComes) {
        SetNote(ENABLED, ReadChain());
    }
}

void ChainSteps::TakeEnableBack(const CInstallSession& session, const WideText& backup)
{
    const CValueData enabled = FindNote(ENABLED);
    if (!enabled || (enabled->bytes.empty() && !IsInChain())) {
        return;
    }
    bool bAsItWasLeft = false;
    Succeeds(session, [&] { bAsItWasLeft = DescribeHostInService().empty() && ReadChain() == *enabled; });
    if (!bAsItWasLeft) {
        TakeOutByAllMeans(session);
    } else if (!Succeeds(session, [&] { Lumctl::Run(session, {L"chain", L"restore", backup}); })) {
        SetNote(RESCUED, MakeNumber(1));
        TakeOutByAllMeans(session);
        throw CSetupError(std::string("lum_gina.dll is out of the chain, and that is not what it was") +
                          IN_BACKUP);
    }
}

void ChainSteps::Disable(const CInstallSession& session)
{
    SetNote(WAS_ENABLED, IsInChain() ? MakeNumber(1) : std::nullopt);
    SwitchMonitor(session, L"off");
    TakeOut(session);
}

/// Starts the monitor even if an administrator had stopped it before: a host does not say.
void ChainSteps::TakeDisableBack(const CInstallSession& session)
{
    try {
        if (FindNote(WAS_ENABLED)) {
            Lumctl::Run(session, {L"chain", L"enable", L"--no-safe-start", L"--in-service"});
            SetNote(WAS_ENABLED, std::nullopt);
        }
    } catch (...) {
        SwitchMonitor(session, L"on");
        throw;
    }
    SwitchMonitor(session, L"on");
}

void ChainSteps::EnsureStart(const CInstallSession& session)
{
    using State = CDllFile::State;
    const State state = InspectDll(HOST_GINA, nullptr).state;
    // What cannot be read now may be readable at the start.
    if (state == State::Usable || state == State::Unreadable) {
        return;
    }
    if (IsInChain()) {
        TakeOutByAllMeans(session);
    } else if (MayBeInChain()) {
        session.Log("lum_gina.dll is not there at the next start, and an unknown GINA may load it: lumctl "
                    "chain check");
    }
}

bool ChainSteps::IsBackupNeeded()
{
    return FindNote(RESCUED).has_value();
}

bool ChainSteps::IsInChain()
{
    return FollowChain().HasGina(HOST_GINA);
}

bool ChainSteps::MayBeInChain()
{
    const CChainView view = FollowChain();
    return view.HasGina(HOST_GINA) || view.end != ChainEnd::Complete;
}
