#include <cwchar>

#include "Action.h"
#include "ChainSteps.h"
#include "GinaNames.h"
#include "KeptSettings.h"
#include "LibraryFile.h"
#include "Lumctl.h"
#include "machine/SetupError.h"
#include "plugins/PluginList.h"

// The custom actions of the installation package that change the machine. The installer calls them as SYSTEM.

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

} // namespace

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
