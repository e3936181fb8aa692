#include "Action.h"
#include "ChainSteps.h"
#include "GinaNames.h"
#include "KeptSettings.h"
#include "LibraryFile.h"
#include "Lumctl.h"
#include "machine/DllFile.h"
#include "machine/SetupError.h"
#include "online/OnlineHost.h"

namespace {

/// For a library that is in the chain and that no host has loaded. The installer replaces such a file at
/// once, with a moment in which there is none.
void RequireReplaceable()
{
    using State = CDllFile::State;
    const State state = InspectDll(HOST_GINA, nullptr).state;
    if (state == State::Leaving) {
        throw CSetupError("lum_gina.dll is in the chain and gone after the restart: lumctl chain check");
    }
    // What cannot be loaded anyway is better replaced than not.
    if (state != State::Missing && state != State::Unusable) {
        throw CSetupError("lum_gina.dll is in the chain and has not been loaded yet: restart first");
    }
}

/// For what an earlier installation has left, which Install takes back first. A host in service keeps the
/// library from being put in again before the restart; from some chains it is taken out only by deleting
/// Winlogon's GinaDLL.
void RequireRemovable(const CInstallSession& session, bool bHost)
{
    const std::string left = "an earlier installation was not taken back, and its library ";
    if (bHost) {
        throw CSetupError(left + "is in service: lumctl gina disable, restart, and install again");
    }
    try {
        Lumctl::Run(session, {L"chain", L"disable", L"--dry-run"});
    } catch (const std::exception& error) {
        throw CSetupError(left +
                          "cannot safely be taken out of the chain. Put right what lumctl chain check "
                          "says, and install again. " +
                          error.what());
    }
}

} // namespace

/// Fails on a machine that the package must leave alone, before anything is changed. The installer calls this
/// as the user.
CUSTOM_ACTION(CheckMachine)
{
    const std::uint64_t nInstalled = LibraryFile::GetVersion();
    const std::uint64_t nPackaged = LibraryFile::ParseVersion(session.Property(L"LIBRARYVERSION"));
    if (nInstalled > nPackaged) {
        throw CSetupError("a newer lum_gina.dll is in the system directory already");
    }
    const bool bInChain = ChainSteps::IsInChain();
    const bool bLeft = IsAnythingKept() && session.Property(L"OLDER").empty();
    const bool bHost = (bInChain || bLeft) && !DescribeHostInService().empty();
    if (bInChain && !bHost && nInstalled < nPackaged) {
        RequireReplaceable();
    }
    if (bLeft) {
        RequireRemovable(session, bHost);
    }
}
