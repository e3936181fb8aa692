#include "LibraryFile.h"

#include <cwchar>
#include <vector>

#include <windows.h>

#include "GinaNames.h"
#include "InstallSession.h"

namespace {

WideText GetPath()
{
    WCHAR szDirectory[MAX_PATH] = {};
    GetSystemDirectoryW(szDirectory, MAX_PATH);
    return WideText(szDirectory) + L'\\' + HOST_GINA;
}

} // namespace

bool LibraryFile::Exists()
{
    return GetFileAttributesW(GetPath().c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::uint64_t LibraryFile::GetVersion()
{
    DWORD dwIgnored = 0;
    std::vector<BYTE> data(GetFileVersionInfoSizeW(GetPath().c_str(), &dwIgnored));
    void* pInfo = nullptr;
    UINT cbInfo = 0;
    if (data.empty() ||
        !GetFileVersionInfoW(GetPath().c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
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
    const HANDLE hFile = CreateFileW(GetPath().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile != INVALID_HANDLE_VALUE) {
        FlushFileBuffers(hFile);
        CloseHandle(hFile);
    }
}
