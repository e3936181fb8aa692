// The host on a machine whose registry or loader fails: who is in the list afterwards, and what Winlogon is
// told. For the native target, where failures are injected.

#include "Exceptions.h"
#include "HostMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Call = PlatformCall;

constexpr char UNKNOWN_GINA[] =
    "[EXCEPTION] Don't know which GINA to pass through to. Defaulting to msgina.dll";

class FailingHost : public CHostMachine
{
protected:
    FailingHost()
    {
        SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
        SetDword(OWN_KEY, TEXT("Timeout"), 300);
    }
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
        s_dwTimeout = NOT_SET;
        const CFaultInjection fault(row.call, 1, ERROR_ACCESS_DENIED, row.szName, FaultRepeat::FromThenOn);
        Load();
        EXPECT_EQ(row.dwTimeout != NOT_SET, Initialize());
        EXPECT_EQ(Lines{row.szGina}, Chain());
        EXPECT_EQ(row.dwTimeout, s_dwTimeout);
        EXPECT_EQ(1, row.szLine == nullptr ? 1 : Count(row.szLine));
        EXPECT_EQ(TRUE, host->LUMWlxIsLockOk(nullptr));
        host.reset();
    }
}

TEST_F(FailingHost, WithoutAnyGinaNegotiationFails)
{
    const CFaultInjection fault(Call::LoadLibraryW, 1, ERROR_MOD_NOT_FOUND, nullptr, FaultRepeat::FromThenOn);
    host = std::make_unique<CLUMGina>(HOST);
    EXPECT_THROW(Negotiate(), CUnableToLoadDLLException);
    for (const char* szDLL : {"standin_gina.dll", "msgina.dll"}) {
        EXPECT_EQ(1,
                  Count(std::string("[EXCEPTION] Unable to load DLL, Filename: ") + szDLL + ", Error: 0x7e"));
    }
    EXPECT_EQ(Lines(), Chain());
    EXPECT_FALSE(Initialize());
}

} // namespace
