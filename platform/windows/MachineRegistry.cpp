#include "platform/MachineRegistry.h"

namespace {

/// ERROR_SUCCESS, or why the file cannot be read.
LONG TryRead(const WCHAR* szFile)
{
    const HANDLE hFile = CreateFileW(szFile, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return static_cast<LONG>(GetLastError());
    }
    CloseHandle(hFile);
    return ERROR_SUCCESS;
}

/// Runs a program to its end; ERROR_SUCCESS and its exit code, or why it could not be run.
LONG RunProgram(std::basic_string<WCHAR> commandLine, DWORD& dwExitCode)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
    {
        return static_cast<LONG>(GetLastError());
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &dwExitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return ERROR_SUCCESS;
}

} // namespace

LONG MachineRegistry::Load(const WCHAR*, std::string*)
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::Import(const WCHAR* szFile, std::string* pReason)
{
    // The editor says nothing of a file that it cannot find, and takes a name with slashes for options.
    WCHAR szPath[MAX_PATH] = {};
    const DWORD cchPath = GetFullPathNameW(szFile, MAX_PATH, szPath, nullptr);
    if (cchPath == 0 || cchPath >= MAX_PATH) {
        return ERROR_INVALID_NAME;
    }
    LONG lResult = TryRead(szPath);
    DWORD dwExitCode = 0;
    if (lResult == ERROR_SUCCESS) {
        lResult = RunProgram(std::basic_string<WCHAR>(L"regedit.exe /s \"") + szPath + L'"', dwExitCode);
    }
    if (lResult == ERROR_SUCCESS && dwExitCode != 0) {
        lResult = ERROR_BADDB;
        if (pReason != nullptr) {
            *pReason = "the registry editor cannot import it";
        }
    }
    return lResult;
}

LONG MachineRegistry::Save(const WCHAR*)
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::Clear()
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::ForgetVolatile()
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}
