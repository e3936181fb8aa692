// The host on a machine whose registry or loader fails: who is in the list afterwards, and what Winlogon is
// told. For the native target, where failures are injected.

#include <algorithm>
#include <memory>

#include "Exceptions.h"
#include "LUMGina.h"
#include "Standin.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Lines = std::vector<std::string>;
using Call = PlatformCall;

constexpr char UNKNOWN_GINA[] =
    "[EXCEPTION] Don't know which GINA to pass through to. Defaulting to msgina.dll";

constexpr char UNHANDLED[] = "[WARNING] An unhandled exception occurred";

class FailingHost : public CTestMachine
{
protected:
    FailingHost()
    {
        SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
        SetDword(OWN_KEY, TEXT("Timeout"), 300);
        std::fill_n(reinterpret_cast<PVOID*>(&m_table), sizeof(m_table) / sizeof(PVOID),
                    reinterpret_cast<PVOID>(SetTimeout));
    }

    static BOOL WINAPI SetTimeout(HANDLE, DWORD dwTimeout)
    {
        s_dwTimeout = dwTimeout;
        return TRUE;
    }

    bool Negotiate()
    {
        host = std::make_unique<CLUMGina>(reinterpret_cast<HINSTANCE>(0x1000));
        DWORD dwVersion = 0;
        return host->LUMWlxNegotiate(WLX_VERSION_1_4, &dwVersion) != FALSE;
    }
    bool Initialize()
    {
        PVOID pContext = nullptr;
        return host->LUMWlxInitialize(nullptr, nullptr, nullptr, &m_table, &pContext) != FALSE;
    }

    static constexpr DWORD NOT_SET = 77;
    static inline DWORD s_dwTimeout = NOT_SET;
    WLX_DISPATCH_VERSION_1_4 m_table{};
    CStandin msgina{TEXT("msgina.dll")};
    CStandin other{TEXT("standin_gina.dll")};
    std::unique_ptr<CLUMGina> host;
};

TEST_F(FailingHost, GoesOnWithWhatItCanReadAndLoad)
{
    struct
    {
        const char* szWhat;
        Call call;
        const WCHAR* szName;
        const char* szGina;
        const char* szLine;
        DWORD dwTimeout; ///< that Winlogon is told; NOT_SET when the host is not initialised
    } const rows[] = {
        {"nothing", Call::LocalFree, TEXT("-"), "standin_gina.dll", nullptr, 300},
        {"the name of the GINA", Call::RegQueryValueExW, TEXT("GinaDLL"), "msgina.dll", UNKNOWN_GINA, 300},
        {"the GINA", Call::LoadLibraryW, TEXT("standin_gina.dll"), "msgina.dll",
         "[EXCEPTION] Unable to load DLL, Filename: standin_gina.dll, Error: 0x5", 300},
        {"the own key", Call::RegOpenKeyExW, OWN_KEY, "msgina.dll", UNKNOWN_GINA, 120},
        {"the timeout", Call::RegQueryValueExW, TEXT("Timeout"), "standin_gina.dll",
         "[WARNING] LUM Registry key could not be loaded, Key: Timeout", 120},
        {"the volatile key", Call::RegOpenKeyExW, VOLATILE_KEY, "standin_gina.dll",
         "[EXCEPTION] Unable to write to registry, Registry Value: Enabled, Error: 0xffffffff", NOT_SET},
        {"the status", Call::RegSetValueExW, TEXT("Enabled"), "standin_gina.dll", UNHANDLED, NOT_SET},
        {"the count", Call::RegSetValueExW, TEXT("InstanceCount"), "standin_gina.dll", UNHANDLED, NOT_SET},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szWhat);
        ClearLog();
        s_dwTimeout = NOT_SET;
        const CFaultInjection fault(row.call, 1, ERROR_ACCESS_DENIED, row.szName, FaultRepeat::FromThenOn);
        ASSERT_TRUE(Negotiate());
        EXPECT_EQ(row.dwTimeout != NOT_SET, Initialize());
        ASSERT_EQ(1u, host->m_pGinaObjectList->m_dwCount);
        EXPECT_EQ(row.szGina, Narrow(host->m_pGinaObjectList->m_pHead->m_pItem->GetGinaDLLName()));
        EXPECT_EQ(row.dwTimeout, s_dwTimeout);
        EXPECT_EQ(1, row.szLine == nullptr ? 1 : Count(row.szLine));
        EXPECT_EQ(TRUE, host->LUMWlxIsLockOk(nullptr));
        host.reset();
    }
}

TEST_F(FailingHost, WithoutAnyGinaNegotiationFails)
{
    const CFaultInjection fault(Call::LoadLibraryW, 1, ERROR_MOD_NOT_FOUND, nullptr, FaultRepeat::FromThenOn);
    EXPECT_THROW(Negotiate(), CUnableToLoadDLLException);
    EXPECT_EQ((Lines{"[EXCEPTION] Unable to load DLL, Filename: standin_gina.dll, Error: 0x7e",
                     "[EXCEPTION] Unable to load DLL, Filename: msgina.dll, Error: 0x7e"}),
              [this] {
                  Lines lines = Log();
                  std::erase_if(lines, [](const std::string& line) {
                      return line.find("DLL, Filename") == std::string::npos;
                  });
                  return lines;
              }());
    EXPECT_EQ(0u, host->m_pGinaObjectList->m_dwCount);
    EXPECT_FALSE(Initialize());
}

} // namespace
