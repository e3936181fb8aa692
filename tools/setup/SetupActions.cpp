#include <cstdlib>
#include <cwchar>
#include <exception>

#include "CommandLineRunner.h"
#include "GinaNames.h"
#include "InstallSession.h"
#include "KeyTree.h"
#include "machine/SetupError.h"

// The custom actions of the installation package. The installer calls them as SYSTEM, in a process of its
// own.

namespace {

/// What was in the library's own key before it was installed: a copy of that key, which is missing when there
/// was none, and a value that is written last.
constexpr WCHAR KEPT_KEY[] = L"SOFTWARE\\ORX\\LUM\\Setup";
constexpr WCHAR KEPT_SETTINGS[] = L"Gina";
constexpr WCHAR KEPT_WHOLE[] = L"Whole";

using Action = void (*)(const CInstallSession&);

UINT CarryOut(MSIHANDLE hInstall, Action action)
{
    const CInstallSession session(hInstall);
    try {
        action(session);
        return ERROR_SUCCESS;
    } catch (const std::exception& error) {
        session.ShowError(std::string("LUM GINA: ") + error.what());
        return ERROR_INSTALL_FAILURE;
    }
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

void RunForEach(const CInstallSession& session)
{
    std::vector<WideText> words = session.Fields();
    if (words.back().substr(0, 1) != L",") {
        Run(session, words);
        return;
    }
    for (const WideText& part : Split(words.back(), L',')) {
        words.back() = Trim(part);
        if (!words.back().empty()) {
            Run(session, words);
        }
    }
}

CKeyTreeValue MakeNumber(DWORD dwNumber)
{
    const BYTE* pData = reinterpret_cast<const BYTE*>(&dwNumber);
    return {REG_DWORD, {pData, pData + sizeof(dwNumber)}};
}

/// setting: NAME=NUMBER; without a number there is nothing to do.
void AddSetting(CKeyTree& settings, const WideText& setting)
{
    const std::vector<WideText> parts = Split(setting, L'=');
    const WideText number = parts.size() == 2 ? Trim(parts[1]) : WideText();
    if (number.find_first_not_of(L"0123456789") != number.npos || number.size() > 9) {
        throw CSetupError(Shown(setting) + " is no number");
    }
    if (!number.empty()) {
        settings.values[parts[0]] = MakeNumber(std::wcstoul(number.c_str(), nullptr, 10));
    }
}

void Keep(const CInstallSession& session)
{
    const std::optional<CKeyTree> found = ReadKeyTree(LUM_GINA_MTM);
    CKeyTree kept;
    if (found) {
        kept.keys[KEPT_SETTINGS] = *found;
    }
    WriteKeyTree(KEPT_KEY, kept);
    kept.values[KEPT_WHOLE] = MakeNumber(1);
    WriteKeyTree(KEPT_KEY, kept);

    CKeyTree settings = found.value_or(CKeyTree());
    for (const WideText& setting : session.Fields()) {
        AddSetting(settings, setting);
    }
    if (!settings.values.empty() || found) {
        WriteKeyTree(LUM_GINA_MTM, settings);
    }
}

void PutBack(const CInstallSession& session)
{
    const std::optional<CKeyTree> kept = ReadKeyTree(KEPT_KEY);
    if (kept && kept->values.count(KEPT_WHOLE) != 0) {
        const auto settings = kept->keys.find(KEPT_SETTINGS);
        WriteKeyTree(LUM_GINA_MTM,
                     settings != kept->keys.end() ? std::optional(settings->second) : std::nullopt);
    }
    WriteKeyTree(KEPT_KEY, std::nullopt);
    DeleteEmptyKey(L"SOFTWARE\\ORX\\LUM");
    DeleteEmptyKey(L"SOFTWARE\\ORX");
    for (const WideText& file : session.Fields()) {
        DeleteFileW(file.c_str());
    }
}

} // namespace

/// Runs the program that the first field names; the others are its arguments. A last field that begins with a
/// comma is a list, with commas between: the program is run once for each name in it. What it prints goes to
/// the installer's log. Fails when it ends with another status than 0.
extern "C" UINT __stdcall RunLumctl(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, RunForEach);
}

/// Keeps the settings that there are, and then makes those that the fields name, NAME=NUMBER each.
extern "C" UINT __stdcall KeepSettings(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, Keep);
}

/// Makes the settings what they were when they were kept, and deletes the files that the fields name.
extern "C" UINT __stdcall PutSettingsBack(MSIHANDLE hInstall)
{
    return CarryOut(hInstall, PutBack);
}
