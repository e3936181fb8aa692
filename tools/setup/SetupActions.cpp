#include <cwchar>

#include "Action.h"
#include "ChainSteps.h"
#include "GinaNames.h"
#include "KeptSettings.h"
#include "LibraryFile.h"
#include "Lumctl.h"
#include "machine/SetupError.h"

// The custom actions of the installation package. The installer calls them as SYSTEM, in a process of its
// own.

namespace {

WideText Trim(const WideText& text)
{
    const std::size_t nBegin = text.find_first_not_of(L' ');
    return nBegin == text.npos ? WideText() : text.substr(nBegin, text.find_last_not_of(L' ') - nBegin + 1);
}

/// setting: NAME=NUMBER; without a number there is nothing to do.
void MakeSetting(const WideText& setting)
{
    const std::vector<WideText> parts = Split(setting, L'=');
    const WideText number = parts.size() == 2 ? Trim(parts[1]) : WideText();
    if (number.find_first_not_of(L"0123456789") != number.npos || number.size() > 9) {
        throw CSetupError(Shown(setting) + " is no number");
    }
    if (!number.empty()) {
        MakeKey(LUM_GINA_MTM);
        WriteKeyValue(LUM_GINA_MTM, parts[0], MakeNumberValue(std::wcstoul(number.c_str(), nullptr, 10)));
    }
}

/// Fields: the file for the backup, ENABLE, the names of plugins with commas between, settings.
void InstallAll(const CInstallSession& session)
{
    const std::vector<WideText> fields = session.Fields();
    for (std::size_t nField = 3; nField < fields.size(); ++nField) {
        MakeSetting(fields[nField]);
    }
    for (const WideText& part : Split(fields.at(2), L',')) {
        if (const WideText plugin = Trim(part); !plugin.empty()) {
            Lumctl::Run(session, {L"plugins", L"add", plugin});
        }
    }
    if (fields[1] != L"0") {
        ChainSteps::Enable(session, fields[0]);
    }
}

void ForgetAll(const CInstallSession& session)
{
    TakeSettingsBack(ChainSteps::MayBeInChain());
    DeleteFileW(session.Fields()[0].c_str());
}

void TakeInstallBack(const CInstallSession& session)
{
    ChainSteps::TakeEnableBack(session, session.Fields()[0]);
    ForgetAll(session);
}

void InstallKeeping(const CInstallSession& session)
{
    // Of an earlier installation that could not be taken back.
    TakeInstallBack(session);
    KeepSettings();
    try {
        InstallAll(session);
    } catch (...) {
        KeepSettingsLeft();
        throw;
    }
    KeepSettingsLeft();
}

void RequireNoNewer(const CInstallSession& session)
{
    if (LibraryFile::GetVersion() > LibraryFile::ParseVersion(session.Property(L"LIBRARYVERSION"))) {
        throw CSetupError("a newer lum_gina.dll is in the system directory already");
    }
}

void FlushLibrary(const CInstallSession&)
{
    LibraryFile::Flush();
}

} // namespace

/// Fails when the system directory has a newer library than the package.
CUSTOM_ACTION(RefuseOlder, RequireNoNewer)

/// Sees that the library's file is on the disk.
CUSTOM_ACTION(Flush, FlushLibrary)

/// Installs all but files. Fields: see InstallAll.
CUSTOM_ACTION(Install, InstallKeeping)

/// Takes back what Install did. The field is the file with the backup, which goes. Fails, and keeps what
/// there is to put back by hand, when the chain cannot be made what it was.
CUSTOM_ACTION(UndoInstall, TakeInstallBack)

/// Takes the library out of the chain, before its file goes.
CUSTOM_ACTION(Remove, ChainSteps::Disable)

/// Puts it in again if it was in the chain.
CUSTOM_ACTION(UndoRemove, ChainSteps::TakeDisableBack)

/// Ends a removal: takes the settings back. The field is the file with the backup, which goes.
CUSTOM_ACTION(Forget, ForgetAll)

/// The last that is done when the installer rolls back: whatever has failed before, no chain names a file
/// that is not there.
CUSTOM_ACTION(Guard, ChainSteps::Guard)
