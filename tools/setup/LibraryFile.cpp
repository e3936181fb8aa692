#include "LibraryFile.h"

#include <cwchar>
#include <vector>

#include <windows.h>

#include "GinaNames.h"
#include "machine/DllDirectories.h"
#include "machine/RestartOperations.h"
#include "machine/SetupError.h"

namespace {

constexpr DWORD TRIES = 25;
constexpr DWORD PAUSE_MILLISECONDS = 200;

WideText GetPath()
{
    // The first is the system directory.
    const WideText path = ListDllDirectories().front() + L'\\' + HOST_GINA;
    return FindAfterRestart(path).value_or(path);
}

/// ERROR_SUCCESS, or why it could not be done.
DWORD TryToFlush(const WideText& path)
{
    const HANDLE hFile =
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    const DWORD dwError = FlushFileBuffers(hFile) ? ERROR_SUCCESS : GetLastError();
    CloseHandle(hFile);
    return dwError;
}

} // namespace

std::uint64_t LibraryFile::GetVersion()
{
    const WideText path = GetPath();
    DWORD dwIgnored = 0;
    std::vector<BYTE> data(GetFileVersionInfoSizeW(path.c_str(), &dwIgnored));
    void* pInfo = nullptr;
    UINT cbInfo = 0;
    if (data.empty() || !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
        !VerQueryValueW(data.data(), L"\\", &pInfo, &cbInfo))
    {
        return 0;
    }
    const auto* pFixed = static_cast<const VS_FIXEDFILEINFO*>(pInfo);
    return (std::uint64_t(pFixed->dwFileVersionMS) << 32) | pFixed->dwFileVersionLS;
}

std::uint64_t LibraryFile::ParseVersion(const WideText& text)
{
    std::uint64_t nVersion = 0;
    for (const WideText& field : Split(text, L'.')) {
        nVersion = (nVersion << 16) | (std::wcstoul(field.c_str(), nullptr, 10) & 0xFFFF);
    }
    return nVersion;
}

void LibraryFile::Flush()
{
    const WideText path = GetPath();
    DWORD dwError = TryToFlush(path);
    // A virus scanner holds a new file open for a moment.
    for (DWORD nTry = 1; dwError == ERROR_SHARING_VIOLATION && nTry < TRIES; ++nTry) {
        Sleep(PAUSE_MILLISECONDS);
        dwError = TryToFlush(path);
    }
    if (dwError != ERROR_SUCCESS && dwError != ERROR_SHARING_VIOLATION && dwError != ERROR_ACCESS_DENIED) {
        throw CSetupError(Shown(path) + " cannot be brought to the disk: error " + std::to_string(dwError));
    }
}
