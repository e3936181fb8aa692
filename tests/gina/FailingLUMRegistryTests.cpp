// What the own configuration does when the registry fails: the exception that leaves each operation and the
// lines that are written. For the native target, where failures are injected.

#include <functional>

#include "Exceptions.h"
#include "FailingAllocation.h"
#include "LUMRegistry.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Operation = std::function<bool(CLUMRegistry&)>;

std::string CannotRead(const std::string& value, const char* szError)
{
    return "[EXCEPTION] Unable to read from registry, Registry Value: " + value + ", Error: " + szError;
}

std::string CannotWrite(const std::string& value, const char* szError)
{
    return "[EXCEPTION] Unable to write to registry, Registry Value: " + value + ", Error: " + szError;
}

/// "true", "false", "read exception" or "write exception".
std::string GetOutcome(const Operation& operation, CLUMRegistry& registry)
{
    try {
        return operation(registry) ? "true" : "false";
    } catch (const CUnableToReadRegistryException&) {
        return "read exception";
    } catch (const CUnableToWriteRegistryException&) {
        return "write exception";
    }
}

template <bool (CLUMRegistry::*Get)(DWORD*, bool)>
bool GetDword(CLUMRegistry& registry)
{
    DWORD dwValue = 0;
    return (registry.*Get)(&dwValue, true);
}

bool GetGinaDLL(CLUMRegistry& registry)
{
    WCHAR szGina[260];
    return registry.GetGinaDLL(szGina, 260, true);
}

class FailingLUMRegistry : public CTestMachine
{
protected:
    FailingLUMRegistry()
    {
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll,b.dll"));
        SetDword(OWN_KEY, TEXT("PipeInterval"), 1);
        SetDword(OWN_KEY, TEXT("MonitorInterval"), 2);
    }
};

const Operation SET_ENABLED = [](CLUMRegistry& registry) { return registry.SetEnabled(1); };
const Operation COUNT = [](CLUMRegistry& registry) { return registry.IncreaseInstanceCount(); };
const Operation PARSE = [](CLUMRegistry& registry) { return registry.ParsePlugins(); };
const Operation ADD = [](CLUMRegistry& registry) { return registry.AddPlugin(TEXT("c.dll")); };
const Operation REMOVE = [](CLUMRegistry& registry) { return registry.RemovePlugin(TEXT("b.dll")); };
const std::pair<const char*, Operation> GETTERS[] = {
    {"GinaDLL", GetGinaDLL},
    {"Timeout", GetDword<&CLUMRegistry::GetTimeout>},
    {"PipeInterval", GetDword<&CLUMRegistry::GetPipeInterval>},
    {"MonitorInterval", GetDword<&CLUMRegistry::GetRegistryMonitorInterval>},
    {"InstanceCount", GetDword<&CLUMRegistry::GetInstanceCount>}};

TEST_F(FailingLUMRegistry, OperationsTellTheirReason)
{
    constexpr auto READ = PlatformCall::RegQueryValueExW;
    constexpr auto WRITE = PlatformCall::RegSetValueExW;
    // What becomes of a value that could not be loaded has the error of a missing object.
    constexpr char UNLOADED[] = "0xffffffff";
    const std::string cannotRead = CannotRead("Plugins", "0x5");
    const std::string cannotWrite = CannotWrite("Plugins", "0x5");
    const std::string unloaded = CannotRead("Plugins", UNLOADED);
    struct CRow
    {
        std::string value;
        Operation operation;
        PlatformCall call;
        DWORD dwUse; ///< of the call by the operation that fails; 0 when the value could not be loaded before
        const char* szOutcome;
        Lines lines;
    };
    std::vector<CRow> rows = {
        {"Enabled", SET_ENABLED, WRITE, 1, "write exception", {CannotWrite("Enabled", "0x5")}},
        {"InstanceCount", COUNT, WRITE, 1, "write exception", {CannotWrite("InstanceCount", "0x5")}},
        // A count that cannot be read is not written either.
        {"InstanceCount", COUNT, READ, 1, "true", {CannotRead("InstanceCount", "0x5")}},
        {"Plugins", PARSE, READ, 1, "false", {cannotRead, UNHANDLED}},
        {"Plugins", ADD, READ, 2, "false", {FAILED, cannotRead, UNHANDLED}},
        {"Plugins", ADD, WRITE, 1, "false", {FAILED, cannotWrite, UNHANDLED}},
        {"Plugins", REMOVE, WRITE, 1, "false", {cannotWrite, UNHANDLED}},
        // Whether it is listed cannot be told, and the registry is as it was.
        {"Plugins", REMOVE, READ, 1, "true", {cannotRead, UNHANDLED, FAILED}},
        {"Plugins", PARSE, READ, 0, "false", {unloaded, UNHANDLED}},
        {"Plugins", ADD, READ, 0, "false", {unloaded, UNHANDLED, FAILED, unloaded, UNHANDLED}},
        {"Plugins", REMOVE, READ, 0, "true", {unloaded, UNHANDLED, FAILED}},
        // These two are made on the spot.
        {"Enabled", SET_ENABLED, READ, 0, "true", {}},
        {"InstanceCount", COUNT, READ, 0, "true", {}},
    };
    for (const auto& [szValue, get] : GETTERS) {
        rows.push_back({szValue, get, READ, 1, "read exception", {CannotRead(szValue, "0x5")}});
        rows.push_back({szValue, get, READ, 0, "read exception", {CannotRead(szValue, UNLOADED)}});
    }
    for (const CRow& row : rows) {
        SCOPED_TRACE(row.value + " " + row.szOutcome);
        const std::basic_string<WCHAR> name = Widen(row.value);
        SetDword(VOLATILE_KEY, name.c_str(), 0);
        ClearLog();
        const CFaultInjection unloadable(READ, row.dwUse == 0 ? 1 : 0, ERROR_ACCESS_DENIED, name.c_str());
        CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
        const int nReports = row.dwUse == 0 ? 1 : 0;
        EXPECT_EQ(nReports, Count(CannotRead(row.value, "0x5")));
        EXPECT_EQ(nReports, Count("[WARNING] LUM Registry key could not be loaded, Key: " + row.value));
        ClearLog();
        const CFaultInjection fault(row.call, row.dwUse, ERROR_ACCESS_DENIED, name.c_str());
        EXPECT_EQ(row.szOutcome, GetOutcome(row.operation, registry));
        EXPECT_EQ(row.lines, Log());
        EXPECT_EQ("\"a.dll,b.dll\"", GetValue(OWN_KEY, TEXT("Plugins")));
        EXPECT_EQ(row.lines.empty(), GetValue(VOLATILE_KEY, name.c_str()) == "1");
    }
}

TEST_F(FailingLUMRegistry, WithoutTheVolatileKeyNothingIsCounted)
{
    const CFaultInjection open(PlatformCall::RegOpenKeyExW, 1, ERROR_FILE_NOT_FOUND, VOLATILE_KEY,
                               FaultRepeat::FromThenOn);
    const CFaultInjection create(PlatformCall::RegCreateKeyExW, 1, ERROR_ACCESS_DENIED, VOLATILE_KEY,
                                 FaultRepeat::FromThenOn);
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_EQ("write exception", GetOutcome(SET_ENABLED, registry));
    EXPECT_EQ("write exception", GetOutcome(COUNT, registry));
    EXPECT_EQ(1, Count(CannotWrite("Enabled", "0xffffffff")));
    EXPECT_EQ(1, Count(CannotWrite("InstanceCount", "0xffffffff")));
    EXPECT_EQ(2u, registry.GetNumPlugins(true));
}

TEST_F(FailingLUMRegistry, WithoutMemoryTheListIsEmptyOrComplete)
{
    const std::string longList = "the_first_plugin_of_a_long_list.dll,the_second_plugin_of_a_long_list.dll";
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    int nNoList = 0;
    int nNoNewList = 0;
    for (int nBefore = 0; nBefore < 300; ++nBefore) {
        SetString(OWN_KEY, TEXT("Plugins"), Widen(longList).c_str());
        ClearLog();
        bool bAdded = false;
        {
            const CFailingAllocation noMemory(nBefore);
            bAdded = registry.AddPlugin(TEXT("the_third_plugin.dll"));
        }
        const std::string expected = bAdded ? longList + ",the_third_plugin.dll" : longList;
        EXPECT_EQ('"' + expected + '"', GetValue(OWN_KEY, TEXT("Plugins"))) << nBefore;
        const int nNow = Count("[EXCEPTION] Memory could not be allocated, Variable: szNewPlugins");
        nNoNewList += nNow;
        EXPECT_TRUE(nNow == 0 || !bAdded);
        nNoList += Count("[EXCEPTION] Memory could not be allocated, Variable: m_szPlugins");
        EXPECT_EQ(bAdded ? 3u : 2u, registry.GetNumPlugins(true));
    }
    EXPECT_NE(0, nNoList);
    EXPECT_NE(0, nNoNewList);
}

} // namespace
