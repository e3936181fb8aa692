#pragma once

#include <windows.h>

// Native only: what a DLL has instead of a version resource. The calls for resources find it as version
// resource 1 under the name that it is exported with.

/// The root block of a version resource, as Windows lays it out.
struct CNativeVersionResource
{
    WORD wLength;
    WORD wValueLength;
    WORD wType;
    WCHAR szKey[16];
    WORD wPadding;
    VS_FIXEDFILEINFO info;
};
static_assert(sizeof(CNativeVersionResource) == 92);

constexpr CNativeVersionResource MakeNativeVersionResource(WORD wMajor, WORD wMinor, WORD wBuild,
                                                           WORD wRevision) noexcept
{
    const DWORD dwHigh = static_cast<DWORD>(wMajor) << 16 | wMinor;
    const DWORD dwLow = static_cast<DWORD>(wBuild) << 16 | wRevision;
    CNativeVersionResource resource = {
        sizeof(resource), sizeof(VS_FIXEDFILEINFO), 0, TEXT("VS_VERSION_INFO"), 0, {}};
    resource.info.dwSignature = VS_FFI_SIGNATURE;
    resource.info.dwStrucVersion = VS_FFI_STRUCVERSION;
    resource.info.dwFileVersionMS = resource.info.dwProductVersionMS = dwHigh;
    resource.info.dwFileVersionLS = resource.info.dwProductVersionLS = dwLow;
    resource.info.dwFileFlagsMask = VS_FFI_FILEFLAGSMASK;
    resource.info.dwFileOS = VOS_NT_WINDOWS32;
    resource.info.dwFileType = VFT_DLL;
    return resource;
}

extern "C" const CNativeVersionResource NativeVersionResource;
