#include "Arguments.h"

#include <algorithm>
#include <cstring>

namespace {

/// A copy that the caller of the GINA releases with LocalFree.
PWSTR LocalCopy(const WCHAR* szText)
{
    const std::size_t cbText = (std::char_traits<WCHAR>::length(szText) + 1) * sizeof(WCHAR);
    void* pCopy = LocalAlloc(LMEM_FIXED, cbText);
    if (pCopy != nullptr) {
        std::memcpy(pCopy, szText, cbText);
    }
    return static_cast<PWSTR>(pCopy);
}

template <typename T>
void LeaveValue(CRecord& record, DWORD dwIndex, T* pArgument, T value)
{
    if (pArgument != nullptr) {
        *pArgument = value;
        record.written[dwIndex] = AsValue(value);
    }
}

} // namespace

void Receive(CRecord& record, PWSTR szArgument)
{
    if (szArgument != nullptr) {
        record.SetText(record.dwArguments, szArgument);
    }
    record.argument[record.dwArguments++] = AsValue(szArgument);
}

void Leave(CRecord& record, DWORD dwIndex, CVersionOut argument)
{
    LeaveValue(record, dwIndex, argument.pdwVersion, g_Standin.GetVersion());
}

void Leave(CRecord& record, DWORD dwIndex, PDWORD pdwArgument)
{
    LeaveValue(record, dwIndex, pdwArgument, StandinValue(record.call, dwIndex));
}

void Leave(CRecord& record, DWORD dwIndex, BOOL* pbArgument)
{
    if (pbArgument != nullptr) {
        LeaveValue(record, dwIndex, pbArgument, BOOL(*pbArgument == FALSE));
    }
}

void Leave(CRecord& record, DWORD dwIndex, PVOID* ppArgument)
{
    const ULONG_PTR value = StandinValue(record.call, dwIndex);
    LeaveValue(record, dwIndex, ppArgument, reinterpret_cast<PVOID>(value));
}

void Leave(CRecord& record, DWORD dwIndex, PLUID pArgument)
{
    if (pArgument != nullptr) {
        pArgument->LowPart = StandinValue(record.call, dwIndex);
        pArgument->HighPart = 1;
        record.written[dwIndex] = std::uint64_t(1) << 32 | pArgument->LowPart;
    }
}

void Leave(CRecord& record, DWORD dwIndex, CProfileOut argument)
{
    if (argument.ppProfile == nullptr) {
        return;
    }
    auto* pProfile = static_cast<PWLX_PROFILE_V1_0>(LocalAlloc(LMEM_FIXED, sizeof(WLX_PROFILE_V1_0)));
    if (pProfile != nullptr) {
        pProfile->dwType = WLX_PROFILE_TYPE_V1_0;
        pProfile->pszProfile = LocalCopy(STANDIN_PROFILE);
    }
    LeaveValue<PVOID>(record, dwIndex, argument.ppProfile, pProfile);
}

void Leave(CRecord& record, DWORD dwIndex, CStatusOut argument)
{
    if (argument.szMessage == nullptr || argument.dwSize == 0) {
        return;
    }
    const WideText message = WideText(STANDIN_STATUS_TEXT).substr(0, argument.dwSize - 1);
    std::copy_n(message.c_str(), message.size() + 1, argument.szMessage);
    record.SetText(dwIndex, message);
}

void Leave(CRecord& record, DWORD dwIndex, PWLX_MPR_NOTIFY_INFO pArgument)
{
    if (pArgument == nullptr) {
        return;
    }
    pArgument->pszUserName = LocalCopy(STANDIN_USER);
    pArgument->pszDomain = LocalCopy(STANDIN_DOMAIN);
    pArgument->pszPassword = LocalCopy(STANDIN_PASSWORD);
    pArgument->pszOldPassword = nullptr;
    record.written[dwIndex] = AsValue(pArgument->pszUserName);
    record.SetText(dwIndex, WideText(STANDIN_DOMAIN) + TEXT("\\") + STANDIN_USER);
}
