#include "PipeOwner.h"

namespace {

// Large enough for any SID, and what comes with it.
union CBuffer {
    BYTE bytes[1024];
    DWORD dwAligned;
};

/// S-1-5-...
struct CSystemSid
{
    BYTE byRevision = SID_REVISION;
    BYTE byParts;
    BYTE byAuthority[6] = {0, 0, 0, 0, 0, 5};
    DWORD dwParts[2];
};

bool IsSid(PSID pSid, CSystemSid sid) noexcept
{
    return EqualSid(pSid, &sid) != FALSE;
}

bool IsOwnUser(PSID pSid) noexcept
{
    HANDLE hToken = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &hToken)) {
        return false;
    }
    CBuffer user;
    DWORD cbUser = 0;
    const bool bRead =
        GetTokenInformation(hToken, TokenUser, user.bytes, sizeof(user.bytes), &cbUser) != FALSE;
    CloseHandle(hToken);
    return bRead && EqualSid(pSid, reinterpret_cast<const TOKEN_USER*>(user.bytes)->User.Sid) != FALSE;
}

bool IsWine() noexcept
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace

bool IsPipeOfTrustedOwner(HANDLE hPipe) noexcept
{
    CBuffer descriptor;
    DWORD cbDescriptor = 0;
    PSID pOwner = nullptr;
    BOOL bDefaulted = FALSE;
    if (!GetKernelObjectSecurity(hPipe, OWNER_SECURITY_INFORMATION, descriptor.bytes,
                                 sizeof(descriptor.bytes), &cbDescriptor) ||
        !GetSecurityDescriptorOwner(descriptor.bytes, &pOwner, &bDefaulted))
    {
        return false;
    }
    if (IsWine() && (pOwner == nullptr || IsOwnUser(pOwner))) {
        // One user has all that runs in it, and it may give a pipe no owner at all.
        return true;
    }
    return pOwner != nullptr &&
           (IsSid(pOwner, {.byParts = 1, .dwParts = {SECURITY_LOCAL_SYSTEM_RID, 0}}) ||
            IsSid(pOwner, {.byParts = 2, .dwParts = {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS}}));
}
