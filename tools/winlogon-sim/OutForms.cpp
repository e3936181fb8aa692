#include "OutForms.h"

#include <cstring>

#include "Codes.h"
#include <winwlx.h>

namespace {

template <typename T>
T Load(const void* pStorage)
{
    T value;
    std::memcpy(&value, pStorage, sizeof(value));
    return value;
}

template <typename T>
COutValue ReadNumber(const void* pStorage)
{
    return {Load<T>(pStorage), {}};
}

COutValue ReadPointer(const void* pStorage)
{
    return {reinterpret_cast<ULONG_PTR>(Load<PVOID>(pStorage)), {}};
}

COutValue ReadLuid(const void* pStorage)
{
    const auto luid = Load<LUID>(pStorage);
    return {static_cast<std::uint64_t>(static_cast<DWORD>(luid.HighPart)) << 32 | luid.LowPart, {}};
}

COutValue ReadStatus(const void* pStorage)
{
    return {0, static_cast<const WCHAR*>(pStorage)};
}

COutValue ReadNotifyInfo(const void* pStorage)
{
    const auto info = Load<WLX_MPR_NOTIFY_INFO>(pStorage);
    if (info.pszUserName == nullptr || info.pszDomain == nullptr) {
        return {reinterpret_cast<ULONG_PTR>(info.pszUserName), {}};
    }
    return {reinterpret_cast<ULONG_PTR>(info.pszUserName),
            WideText(info.pszDomain) + TEXT("\\") + info.pszUserName};
}

template <const CCodes& Codes>
std::string DescribeNumber(const COutValue& value)
{
    return Codes.Describe(static_cast<DWORD>(value.number));
}

std::string DescribeLuid(const COutValue& value)
{
    return Format("%u:0x%08x", static_cast<unsigned>(value.number >> 32),
                  static_cast<unsigned>(value.number));
}

std::string DescribePointer(const COutValue& value)
{
    return Format("0x%llx", static_cast<unsigned long long>(value.number));
}

std::string DescribeText(const COutValue& value)
{
    return '"' + ToNarrow(value.text.c_str()) + '"';
}

// The password is there as well, but it is not shown.
std::string DescribeNotifyInfo(const COutValue& value)
{
    return ToNarrow(value.text.c_str());
}

std::string DescribeProfile(const COutValue&)
{
    return "allocated";
}

void ReleaseNotifyInfo(void* pStorage)
{
    const auto info = Load<WLX_MPR_NOTIFY_INFO>(pStorage);
    for (PWSTR szText : {info.pszUserName, info.pszDomain, info.pszPassword, info.pszOldPassword}) {
        LocalFree(szText);
    }
}

void ReleaseProfile(void* pStorage)
{
    auto* pProfile = Load<PWLX_PROFILE_V1_0>(pStorage);
    if (pProfile != nullptr) {
        LocalFree(pProfile->pszProfile);
        LocalFree(pProfile);
    }
}

constexpr std::size_t CB_STATUS = MAX_STATUS_SIZE * sizeof(WCHAR);

} // namespace

const COutForm OUT_VERSION = {sizeof(DWORD), ReadNumber<DWORD>, DescribeNumber<VERSIONS>, nullptr};
const COutForm OUT_DWORD = {sizeof(DWORD), ReadNumber<DWORD>, DescribeNumber<NUMBERS>, nullptr};
const COutForm OUT_BOOL = {sizeof(BOOL), ReadNumber<DWORD>, DescribeNumber<BOOLS>, nullptr};
const COutForm OUT_POINTER = {sizeof(PVOID), ReadPointer, DescribePointer, nullptr};
const COutForm OUT_LUID = {sizeof(LUID), ReadLuid, DescribeLuid, nullptr};
const COutForm OUT_STATUS = {CB_STATUS, ReadStatus, DescribeText, nullptr};
const COutForm OUT_NOTIFY_INFO = {sizeof(WLX_MPR_NOTIFY_INFO), ReadNotifyInfo, DescribeNotifyInfo,
                                  ReleaseNotifyInfo};
const COutForm OUT_PROFILE = {sizeof(PVOID), ReadPointer, DescribeProfile, ReleaseProfile};
