#include <atomic>

#include <windows.h>

#include "Call.h"
#include "LibrarySearch.h"
#include "LoadedModules.h"

using namespace Native;

namespace {

/// A name without an extension means a .dll; one that ends in a dot means no extension at all.
WideText CompleteName(LPCWSTR szFile)
{
    WideText name = szFile;
    const std::size_t nSeparator = name.find_last_of(TEXT("\\/"));
    const std::size_t nDot = name.find_last_of(TEXT("."));
    if (nDot == WideText::npos || (nSeparator != WideText::npos && nDot < nSeparator)) {
        return name + TEXT(".dll");
    }
    if (nDot + 1 == name.size()) {
        name.pop_back();
    }
    return name;
}

std::atomic<UINT> s_nErrorMode = 0;

} // namespace

UINT WINAPI SetErrorMode(UINT nMode) noexcept
{
    return s_nErrorMode.exchange(nMode);
}

HMODULE WINAPI LoadLibraryW(LPCWSTR szFile) noexcept
{
    return LastErrorCall<HMODULE>(PlatformCall::LoadLibraryW, szFile, nullptr, [&] {
        Require(szFile != nullptr, ERROR_INVALID_PARAMETER);
        Require(*szFile != 0, ERROR_MOD_NOT_FOUND);
        const WideText name = CompleteName(szFile);
        if (name.find_first_of(TEXT("\\/")) != WideText::npos) {
            return LoadedModules::Load(ToPath(name.c_str()));
        }
        const HMODULE hModule = LoadedModules::LoadAgain(name);
        if (hModule != nullptr) {
            return hModule;
        }
        const std::string path = FindLibrary(name);
        Require(!path.empty(), ERROR_MOD_NOT_FOUND);
        return LoadedModules::Load(path);
    });
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR szFile) noexcept
{
    return LastErrorCall<HMODULE>(PlatformCall::GetModuleHandleW, szFile, nullptr, [&] {
        Require(szFile != nullptr, ERROR_NOT_SUPPORTED);
        const HMODULE hModule = LoadedModules::Find(CompleteName(szFile));
        Require(hModule != nullptr, ERROR_MOD_NOT_FOUND);
        return hModule;
    });
}

BOOL WINAPI FreeLibrary(HMODULE hModule) noexcept
{
    return LastErrorCall(PlatformCall::FreeLibrary, nullptr, FALSE, [&] {
        Require(hModule != nullptr, ERROR_INVALID_HANDLE);
        LoadedModules::Free(hModule);
        return TRUE;
    });
}

FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR szName) noexcept
{
    // Anything below is an ordinal.
    const bool bName = reinterpret_cast<ULONG_PTR>(szName) > 0xFFFF;
    return LastErrorCall<FARPROC>(PlatformCall::GetProcAddress, bName ? szName : nullptr, nullptr, [&] {
        // Null stands for the program, which exports nothing.
        Require(bName && hModule != nullptr, ERROR_PROC_NOT_FOUND);
        void* pExport = LoadedModules::FindExport(hModule, szName);
        Require(pExport != nullptr, ERROR_PROC_NOT_FOUND);
        return reinterpret_cast<FARPROC>(pExport);
    });
}

DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR szFile, DWORD cchFile) noexcept
{
    return LastErrorCall<DWORD>(PlatformCall::GetModuleFileNameW, nullptr, 0, [&] {
        WideText path;
        FromUtf8(hModule != nullptr ? LoadedModules::GetPath(hModule) : GetProgramPath(), path);
        if (path.size() < cchFile) {
            path.copy(szFile, path.size());
            szFile[path.size()] = 0;
            return static_cast<DWORD>(path.size());
        }
        // As much as fits is copied, without a terminator. The result, the size of the buffer, tells that it
        // was too small.
        path.copy(szFile, cchFile);
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return cchFile;
    });
}
