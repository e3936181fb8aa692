#include "machine/MachineRegistry.h"

#include "machine/ChildProcess.h"

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

} // namespace

LONG MachineRegistry::Load(const WCHAR*, std::string*)
{
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LONG MachineRegistry::Import(const WCHAR* szFile, std::string* pReason)
{
    // The editor does not complain about a file that it cannot find, and reads slashes in a name as options.
    WCHAR szPath[MAX_PATH] = {};
    const DWORD cchPath = GetFullPathNameW(szFile, MAX_PATH, szPath, nullptr);
    if (cchPath == 0 || cchPath >= MAX_PATH) {
        return ERROR_INVALID_NAME;
    }
    LONG lResult = TryRead(szPath);
    Platform::CChildEnd end;
    if (lResult == ERROR_SUCCESS) {
        lResult = Platform::RunChild({L"regedit.exe", L"/s", szPath}, INFINITE, end);
    }
    if (lResult == ERROR_SUCCESS && end.dwExitStatus != 0) {
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

LONG MachineRegistry::KeepIn(const WCHAR*)
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
