#include "platform/NativeVersionResource.h"

#include "Call.h"
#include "LoadedModules.h"

using namespace Native;

HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR szName, LPCWSTR szType) noexcept
{
    return LastErrorCall<HRSRC>(PlatformCall::FindResourceW, nullptr, nullptr, [&] {
        // Null stands for the program, which has no resources.
        Require(hModule != nullptr, ERROR_RESOURCE_DATA_NOT_FOUND);
        void* pResource = LoadedModules::FindExport(hModule, "NativeVersionResource");
        Require(pResource != nullptr, ERROR_RESOURCE_DATA_NOT_FOUND);
        Require(szType == RT_VERSION, ERROR_RESOURCE_TYPE_NOT_FOUND);
        Require(szName == MAKEINTRESOURCE(1), ERROR_RESOURCE_NAME_NOT_FOUND);
        return static_cast<HRSRC>(pResource);
    });
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC hResource) noexcept
{
    return LastErrorCall<HGLOBAL>(PlatformCall::LoadResource, nullptr, nullptr, [&] { return hResource; });
}

LPVOID WINAPI LockResource(HGLOBAL hResource) noexcept
{
    return LastErrorCall<LPVOID>(PlatformCall::LockResource, nullptr, nullptr, [&] { return hResource; });
}

BOOL WINAPI VerQueryValueW(LPCVOID pBlock, LPCWSTR szSubBlock, LPVOID* ppBuffer, UINT* pcbBuffer) noexcept
{
    return LastErrorCall(PlatformCall::VerQueryValueW, nullptr, FALSE, [&] {
        Require(pBlock != nullptr, ERROR_INVALID_DATA);
        Require(szSubBlock[0] == '\\' && szSubBlock[1] == 0, ERROR_RESOURCE_TYPE_NOT_FOUND);
        const auto& resource = *static_cast<const CNativeVersionResource*>(pBlock);
        Require(resource.wValueLength == sizeof(resource.info), ERROR_INVALID_DATA);
        *ppBuffer = const_cast<VS_FIXEDFILEINFO*>(&resource.info);
        *pcbBuffer = sizeof(resource.info);
        return TRUE;
    });
}

LANGID WINAPI GetUserDefaultLangID() noexcept
{
    return 0x0409;
}
