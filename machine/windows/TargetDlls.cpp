#include "machine/dllfile/TargetDlls.h"

#include "machine/DllDirectories.h"
#include "machine/dllfile/PeImage.h"

namespace {

bool Exists(const WideText& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

WideText Directory(UINT(WINAPI* pfnGet)(LPWSTR, UINT), const WCHAR* szSub)
{
    WCHAR szPath[MAX_PATH] = {};
    const UINT cchPath = pfnGet(szPath, MAX_PATH);
    return cchPath != 0 && cchPath < MAX_PATH ? WideText(szPath) + szSub : WideText();
}

/// A name with a drive, or one that starts at the root, is not searched for.
bool IsAbsolute(const WideText& name)
{
    return name.find(':') != WideText::npos || name.front() == '\\' || name.front() == '/';
}

} // namespace

WideText TargetDlls::Find(const WideText& name, const WideText& directory)
{
    if (IsAbsolute(name)) {
        return Exists(name) ? name : WideText();
    }
    const std::vector<WideText> directories =
        directory.empty() ? ListDllDirectories() : std::vector<WideText>{directory};
    for (const WideText& candidate : directories) {
        const WideText path = candidate + L"\\" + name;
        if (!candidate.empty() && Exists(path)) {
            return path;
        }
    }
    return WideText();
}

/// Winlogon's own directory is the system directory.
std::vector<WideText> ListDllDirectories()
{
    return {Directory(GetSystemDirectoryW, L""), Directory(GetWindowsDirectoryW, L"\\system"),
            Directory(GetWindowsDirectoryW, L"")};
}

bool LooksWhereWinlogonLooks()
{
    return true;
}

bool IsDllDirectory(const WCHAR* szDirectory)
{
    const DWORD dwAttributes = GetFileAttributesW(szDirectory);
    return dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

TargetDlls::CNames TargetDlls::ListNames(const std::string& bytes)
{
    const CPeImage image(bytes);
    return {image.ListExports(), image.ListImports()};
}
