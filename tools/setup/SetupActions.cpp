#include <cstdlib>
#include <cwchar>
#include <exception>

#include "CommandLineRunner.h"
#include "GinaNames.h"
#include "InstallSession.h"
#include "KeptSettings.h"
#include "LibraryFile.h"
#include "chain/ChainBackup.h"
#include "chain/ChainChange.h"
#include "chain/OfflineMachine.h"
#include "machine/SetupError.h"
#include "plugins/OfflinePlugins.h"

// The custom actions of the installation package. The installer calls them as SYSTEM, in a process of its
// own. One that takes another back may run long after it, when the machine was switched off in between: by
// then the library may be in service, and others may have changed the chain.

namespace {

/// Notes: the chain as it is with the library put into it, without data until that is done; and that the
/// library was in the chain before a removal.
constexpr WCHAR ENABLED[] = L"Enabled";
constexpr WCHAR WAS_ENABLED[] = L"WasEnabled";

using Action = void (*)(const CInstallSession&);

UINT CarryOut(MSIHANDLE hInstall, Action action)
{
    const CInstallSession session(hInstall);
    std::string trouble;
    try {
        action(session);
        return ERROR_SUCCESS;
    } catch (const std::exception& error) {
        trouble = error.what();
    } catch (...) {
        trouble = "failed";
    }
    session.ShowError("LUM GINA: " + trouble);
    return ERROR_INSTALL_FAILURE;
}

/// In this process: the program may be gone, or not be there yet.
void Run(const CInstallSession& session, const std::vector<WideText>& words)
{
    std::string said = "lumctl";
    std::vector<std::string> arguments = {said};
    for (const WideText& word : words) {
        arguments.push_back(ToNarrow(word.c_str()));
        said += " " + Shown(word);
    }
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    said += "\n";
    bool bIsChange = false;
    try {
        const ExitStatus status = RunCommandLine(static_cast<int>(argv.size()), argv.data(), said, bIsChange);
        if (status == STATUS_DONE) {
            session.Log(said);
            return;
        }
        said += "exit status " + std::to_string(status);
    } catch (const std::exception& error) {
        said += error.what();
    }
    throw CSetupError(said);
}

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

bool IsEnabled()
{
    const CArguments arguments;
    return COfflineMachine(arguments).Follow().HasGina(HOST_GINA);
}

/// All of the chain, to be compared.
CKeyValue ReadChain()
{
    const CArguments arguments;
    COfflineMachine machine(arguments);
    const std::string text = WriteBackup(machine.values, SafeOrder(machine.chain, machine.values));
    return {REG_BINARY, {text.begin(), text.end()}};
}

void Enable(const CInstallSession& session, const WideText& backup)
{
    Run(session, {L"chain", L"backup", backup, L"--force"});
    Run(session, {L"chain", L"check"});
    const bool bAlready = IsEnabled();
    if (!bAlready) {
        SetNote(ENABLED, CKeyValue{REG_BINARY, {}});
    }
    LibraryFile::Flush();
    Run(session, {L"chain", L"enable"});
    if (!bAlready) {
        SetNote(ENABLED, ReadChain());
    }
}

/// Without its monitor a host in service leaves the chain alone, whoever changes it before the restart. So
/// the chain is changed in the registry, which also has what others have written that the host has not seen.
void Disable(const CInstallSession& session)
{
    if (COfflineChain::IsHostInService()) {
        Run(session, {L"monitor", L"off"});
    }
    Run(session, {L"chain", L"disable", L"--in-service"});
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
            Run(session, {L"plugins", L"add", plugin});
        }
    }
    if (fields[1] != L"0") {
        Enable(session, fields[0]);
    }
}

void InstallKeeping(const CInstallSession& session)
{
    KeepSettings();
    try {
        InstallAll(session);
    } catch (...) {
        KeepSettingsLeft();
        throw;
    }
    KeepSettingsLeft();
}

void ForgetAll(const CInstallSession& session)
{
    TakeSettingsBack();
    DeleteFileW(session.Fields()[0].c_str());
}

/// Fails, and keeps what there is to put back by hand, when the chain cannot be put right.
void TakeInstallBack(const CInstallSession& session)
{
    if (const std::optional<CKeyValue> enabled = FindNote(ENABLED)) {
        if (!COfflineChain::IsHostInService() && ReadChain() == *enabled) {
            Run(session, {L"chain", L"restore", session.Fields()[0]});
        } else {
            Disable(session);
        }
    }
    ForgetAll(session);
}

void RemoveFromChain(const CInstallSession& session)
{
    SetNote(WAS_ENABLED, IsEnabled() ? std::optional(MakeNumberValue(1)) : std::nullopt);
    Disable(session);
}

void TakeRemovalBack(const CInstallSession& session)
{
    if (FindNote(WAS_ENABLED)) {
        Run(session, {L"chain", L"enable", L"--no-safe-start", L"--in-service"});
        SetNote(WAS_ENABLED, std::nullopt);
    }
    if (COfflineChain::IsHostInService()) {
        Run(session, {L"monitor", L"on"});
    }
}

/// Whatever has failed before, no chain names a file that is not there.
void GuardChain(const CInstallSession& session)
{
    if (LibraryFile::Exists() || !IsEnabled()) {
        return;
    }
    try {
        Disable(session);
    } catch (const std::exception& error) {
        session.Log(error.what());
        Run(session, {L"chain", L"disable", L"--force", L"--in-service"});
    }
}

void RequireNoNewer(const CInstallSession& session)
{
    if (LibraryFile::GetVersion() > LibraryFile::ParseVersion(session.Property(L"LIBRARYVERSION"))) {
        throw CSetupError("a newer lum_gina.dll is in the system directory already");
    }
}

void RunFields(const CInstallSession& session)
{
    Run(session, session.Fields());
}

void RemoveConfigured(const CInstallSession& session)
{
    const WideText plugin = session.Fields()[0];
    if (IsConfigured(plugin)) {
        Run(session, {L"plugins", L"remove", plugin});
    } else {
        session.Log(Shown(plugin) + " is not configured");
    }
}

} // namespace

/// Installs all but files. Fields: see InstallAll.
extern "C" UINT __stdcall Install(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, InstallKeeping);
}

/// Takes back what Install did. The field is the file with the backup, which goes.
extern "C" UINT __stdcall UndoInstall(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, TakeInstallBack);
}

/// Takes the library out of the chain, before its file goes.
extern "C" UINT __stdcall Remove(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, RemoveFromChain);
}

/// Puts it in again if it was in the chain.
extern "C" UINT __stdcall UndoRemove(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, TakeRemovalBack);
}

/// Ends a removal: takes the settings back. The field is the file with the backup, which goes.
extern "C" UINT __stdcall Forget(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, ForgetAll);
}

/// Takes the library out of the chain if its file is not there. The last that is done when the installer
/// rolls back.
extern "C" UINT __stdcall Guard(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, GuardChain);
}

/// Fails when the system directory has a newer library than the package.
extern "C" UINT __stdcall RefuseOlder(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, RequireNoNewer);
}

/// For packages of plugins: runs the program with the fields as its arguments. What it prints goes to the
/// installer's log. Fails when it ends with another status than 0.
extern "C" UINT __stdcall RunLumctl(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, RunFields);
}

/// For packages of plugins: takes the plugin that the field names out of the configuration, if it is there.
extern "C" UINT __stdcall RemovePlugin(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, RemoveConfigured);
}
