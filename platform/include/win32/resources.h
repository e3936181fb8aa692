#pragma once

#include "win32/types.h"

// Version resources of DLLs (see platform/NativeVersionResource.h), and the user's language.

#define MAKEINTRESOURCE(ID) reinterpret_cast<LPWSTR>(ULONG_PTR(WORD(ID)))
#define RT_VERSION MAKEINTRESOURCE(16)

#define VS_FFI_SIGNATURE 0xFEEF04BD
#define VS_FFI_STRUCVERSION 0x00010000
#define VS_FFI_FILEFLAGSMASK 0x0000003F
#define VOS_NT_WINDOWS32 0x00040004
#define VFT_DLL 0x00000002

DECLARE_HANDLE(HRSRC);
using LANGID = WORD;

struct VS_FIXEDFILEINFO
{
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};

/// Finds version resource 1, and nothing else.
HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR szName, LPCWSTR szType) noexcept;
HGLOBAL WINAPI LoadResource(HMODULE hModule, HRSRC hResource) noexcept;
LPVOID WINAPI LockResource(HGLOBAL hResource) noexcept;
/// The root block "\" only.
BOOL WINAPI VerQueryValueW(LPCVOID pBlock, LPCWSTR szSubBlock, LPVOID* ppBuffer, UINT* pcbBuffer) noexcept;

/// American English.
LANGID WINAPI GetUserDefaultLangID() noexcept;
