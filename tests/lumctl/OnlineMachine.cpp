#include "OnlineMachine.h"

#include <regex>

#include "WinlogonRegistry.h"

namespace {

constexpr WCHAR WPN_KEY[] = TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina");

std::string Shorten(const std::string& names)
{
    static const std::regex pattern("test_plugin_|\\.dll|\"");
    return std::regex_replace(names, pattern, "");
}

} // namespace

COnlineMachine::COnlineMachine()
{
    // The chain is read when a host starts, and one that ends in an unknown GINA is not changed.
    host.reset();
    SetString(WINLOGON_KEY, TEXT("GinaDLL"), TEXT("wpnGina.dll"));
    SetString(WPN_KEY, TEXT("OldGinaDLL"), TEXT("lum_gina.dll"));
    SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("msgina.dll"));
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 1);
    Load();
    EXPECT_TRUE(Initialize());
}

COnlineMachine::~COnlineMachine()
{
    StopServer();
    host.reset();
    DeleteKeys();
}

void COnlineMachine::DeleteKeys()
{
    for (const WCHAR* szKey :
         {WPN_KEY, TEXT("SOFTWARE\\Tamsin\\Airlink"), TEXT("SOFTWARE\\Tamsin"), WINLOGON_KEY})
    {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
    }
}

std::string COnlineMachine::Describe() const
{
    std::string loaded;
    for (const std::string& name : Chain()) {
        loaded += (loaded.empty() ? "" : ",") + name;
    }
    return Shorten(GetValue(WINLOGON_KEY, TEXT("GinaDLL")) + " | " + loaded + " | " +
                   GetValue(OWN_KEY, TEXT("Plugins"))) +
           (host->m_pLUMRegMonitorThreadObject->m_hThread != nullptr ? " | monitored" : "");
}
