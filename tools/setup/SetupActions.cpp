#include <cwchar>

#include "Action.h"
#include "ChainSteps.h"
#include "GinaNames.h"
#include "KeptSettings.h"
#include "LibraryFile.h"
#include "Lumctl.h"
#include "machine/DllFile.h"
#include "machine/SetupError.h"
#include "online/OnlineHost.h"
#include "plugins/PluginList.h"

// The custom actions of the installation package. The installer calls CheckMachine as the user, the others as
// SYSTEM.

namespace {

/// The fields of Install. The first is also that of the actions that take it back.
enum Field : std::size_t
{
    BACKUP,        ///< the file for the chain as it was
    ENABLE,        ///< "0": leave the chain as it is
    PLUGINS,       ///< names with commas between
    FIRST_SETTING, ///< NAME=NUMBER; without a number there is nothing to do
    SECOND_SETTING,
    FIELDS,
};

constexpr std::size_t MOST_DIGITS = 9; ///< always fit a DWORD

void MakeSetting(const WideText& setting)
{
    const std::size_t nEquals = setting.find(L'=');
    const WideText number = Trim(setting.substr(nEquals + 1));
    if (number.find_first_not_of(L"0123456789") != number.npos || number.size() > MOST_DIGITS) {
        throw CSetupError(Shown(setting) + " is no number");
    }
    if (!number.empty()) {
        WriteValue({LUM_GINA_MTM, setting.substr(0, nEquals)},
                   MakeNumber(std::wcstoul(number.c_str(), nullptr, 10)));
    }
}

void InstallAll(const CInstallSession& session)
{
    const std::vector<WideText> fields = session.Fields();
    if (fields.size() != FIELDS) {
        throw CSetupError("a property has a | in it");
    }
    for (std::size_t nField = FIRST_SETTING; nField < FIELDS; ++nField) {
        MakeSetting(fields[nField]);
    }
    for (const WideText& name : CPluginList(fields[PLUGINS]).GetNames()) {
        if (const WideText plugin = Trim(name); !plugin.empty()) {
            Lumctl::Run(session, {L"plugins", L"add", L"--", plugin});
        }
    }
    if (fields[ENABLE] != L"0") {
        ChainSteps::Enable(session, fields[BACKUP]);
    }
}

void ForgetAll(const CInstallSession& session)
{
    const WideText backup = session.Fields()[BACKUP];
    if (ChainSteps::IsBackupNeeded()) {
        // No later installation takes this name.
        const WideText rescue = backup.substr(0, backup.rfind(L'\\') + 1) + L"lum_gina-rescue.reg";
        MoveFileExW(backup.c_str(), rescue.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    }
    TakeSettingsBack(ChainSteps::MayBeInChain());
    DeleteFileW(backup.c_str());
}

void TakeInstallBack(const CInstallSession& session)
{
    ChainSteps::TakeEnableBack(session, session.Fields()[BACKUP]);
    ForgetAll(session);
}

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
        throw CSetupError(
            left +
            "cannot safely be taken out of the chain. Put right what lumctl chain check says, and "
            "install again. " +
            error.what());
    }
}

} // namespace

/// Fails on a machine that the package must leave alone.
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

CUSTOM_ACTION(Flush)
{
    LibraryFile::Flush();
}

/// Installs all but files.
CUSTOM_ACTION(Install)
{
    // An earlier installation may have failed, and not been taken back.
    TakeInstallBack(session);
    KeepSettings();
    ChainSteps::BeginInstall();
    try {
        InstallAll(session);
    } catch (...) {
        // For the rollback, which takes back what was set by then.
        KeepSettingsLeft();
        throw;
    }
    KeepSettingsLeft();
}

/// Takes back what Install did. Fails when the chain cannot be made what it was. The backup stays then.
CUSTOM_ACTION(UndoInstall)
{
    TakeInstallBack(session);
}

/// Takes the library out of the chain, before its file goes.
CUSTOM_ACTION(Remove)
{
    ChainSteps::Disable(session);
}

/// Puts it in again if it was in the chain.
CUSTOM_ACTION(UndoRemove)
{
    ChainSteps::TakeDisableBack(session);
}

/// Ends a removal: takes the settings back.
CUSTOM_ACTION(Forget)
{
    ForgetAll(session);
}

/// The last that is done when the installer rolls back: whatever has failed before, no chain names a file
/// that is not there.
CUSTOM_ACTION(EnsureStart)
{
    ChainSteps::EnsureStart(session);
}
