// What the own configuration does when the registry fails: the exception that leaves each operation and the
// lines that are written. For the native target, where failures are injected.

#include <functional>

#include "Exceptions.h"
#include "FailingAllocation.h"
#include "LUMRegistry.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Lines = std::vector<std::string>;
using Operation = std::function<bool(CLUMRegistry&)>;

constexpr char UNHANDLED[] = "[WARNING] An unhandled exception occurred";
constexpr char FAILED[] = "[WARNING] The requested operation failed or it was cancelled";

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

TEST_F(FailingLUMRegistry, AValueThatCannotBeLoadedIsDoneWithout)
{
    struct
    {
        std::string value;
        Operation operation;
        const char* szOutcome;
        Lines lines; ///< of the operation
    } const rows[] = {
        {"Plugins", PARSE, "false", {CannotRead("Plugins", "0xffffffff"), UNHANDLED}},
        {"Plugins",
         ADD,
         "false",
         {CannotRead("Plugins", "0xffffffff"), UNHANDLED, FAILED, CannotRead("Plugins", "0xffffffff"),
          UNHANDLED}},
        // What cannot be read lists nothing, and what is not listed need not be removed.
        {"Plugins", REMOVE, "true", {CannotRead("Plugins", "0xffffffff"), UNHANDLED, FAILED}},
        {"GinaDLL", GetGinaDLL, "read exception", {CannotRead("GinaDLL", "0xffffffff")}},
        {"Timeout",
         GetDword<&CLUMRegistry::GetTimeout>,
         "read exception",
         {CannotRead("Timeout", "0xffffffff")}},
        {"PipeInterval",
         GetDword<&CLUMRegistry::GetPipeInterval>,
         "read exception",
         {CannotRead("PipeInterval", "0xffffffff")}},
        {"MonitorInterval",
         GetDword<&CLUMRegistry::GetRegistryMonitorInterval>,
         "read exception",
         {CannotRead("MonitorInterval", "0xffffffff")}},
        {"InstanceCount",
         GetDword<&CLUMRegistry::GetInstanceCount>,
         "read exception",
         {CannotRead("InstanceCount", "0xffffffff")}},
        // These two are made on the spot.
        {"Enabled", SET_ENABLED, "true", {}},
        {"InstanceCount", COUNT, "true", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        const std::basic_string<WCHAR> name = Widen(row.value);
        std::unique_ptr<CLUMRegistry> pRegistry;
        ClearLog();
        {
            const CFaultInjection fault(PlatformCall::RegQueryValueExW, 1, ERROR_ACCESS_DENIED, name.c_str());
            pRegistry = std::make_unique<CLUMRegistry>(LUM_GINA_APP, LUM_GINA_MTM);
        }
        EXPECT_EQ(1, Count(CannotRead(row.value, "0x5")));
        EXPECT_EQ(1, Count("[WARNING] LUM Registry key could not be loaded, Key: " + row.value));
        ClearLog();
        EXPECT_EQ(row.szOutcome, GetOutcome(row.operation, *pRegistry));
        EXPECT_EQ(row.lines, Log());
        EXPECT_EQ("\"a.dll,b.dll\"", GetValue(OWN_KEY, TEXT("Plugins")));
    }
    EXPECT_EQ("1", GetValue(VOLATILE_KEY, TEXT("Enabled")));
    EXPECT_EQ("1", GetValue(VOLATILE_KEY, TEXT("InstanceCount")));
}

TEST_F(FailingLUMRegistry, OperationsTellTheirReason)
{
    using Call = PlatformCall;
    struct
    {
        Operation operation;
        Call call;
        DWORD dwUse;
        std::string value;
        const char* szOutcome;
        Lines lines;
    } const rows[] = {
        {GetGinaDLL, Call::RegQueryValueExW, 1, "GinaDLL", "read exception", {CannotRead("GinaDLL", "0x5")}},
        {GetDword<&CLUMRegistry::GetTimeout>,
         Call::RegQueryValueExW,
         1,
         "Timeout",
         "read exception",
         {CannotRead("Timeout", "0x5")}},
        {GetDword<&CLUMRegistry::GetPipeInterval>,
         Call::RegQueryValueExW,
         1,
         "PipeInterval",
         "read exception",
         {CannotRead("PipeInterval", "0x5")}},
        {GetDword<&CLUMRegistry::GetInstanceCount>,
         Call::RegQueryValueExW,
         1,
         "InstanceCount",
         "read exception",
         {CannotRead("InstanceCount", "0x5")}},
        {SET_ENABLED, Call::RegSetValueExW, 1, "Enabled", "write exception", {CannotWrite("Enabled", "0x5")}},
        {COUNT,
         Call::RegSetValueExW,
         1,
         "InstanceCount",
         "write exception",
         {CannotWrite("InstanceCount", "0x5")}},
        // A count that cannot be read is not written either.
        {COUNT, Call::RegQueryValueExW, 1, "InstanceCount", "true", {CannotRead("InstanceCount", "0x5")}},
        {PARSE, Call::RegQueryValueExW, 1, "Plugins", "false", {CannotRead("Plugins", "0x5"), UNHANDLED}},
        {ADD,
         Call::RegQueryValueExW,
         2,
         "Plugins",
         "false",
         {FAILED, CannotRead("Plugins", "0x5"), UNHANDLED}},
        {ADD,
         Call::RegSetValueExW,
         1,
         "Plugins",
         "false",
         {FAILED, CannotWrite("Plugins", "0x5"), UNHANDLED}},
        {REMOVE, Call::RegSetValueExW, 1, "Plugins", "false", {CannotWrite("Plugins", "0x5"), UNHANDLED}},
        // Whether it is listed cannot be told, and the registry is as it was.
        {REMOVE,
         Call::RegQueryValueExW,
         1,
         "Plugins",
         "true",
         {CannotRead("Plugins", "0x5"), UNHANDLED, FAILED}},
    };
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value + " " + row.szOutcome);
        const std::basic_string<WCHAR> name = Widen(row.value);
        ClearLog();
        {
            const CFaultInjection fault(row.call, row.dwUse, ERROR_ACCESS_DENIED, name.c_str());
            EXPECT_EQ(row.szOutcome, GetOutcome(row.operation, registry));
            EXPECT_TRUE(fault.HasFired());
        }
        EXPECT_EQ(row.lines, Log());
        EXPECT_EQ("\"a.dll,b.dll\"", GetValue(OWN_KEY, TEXT("Plugins")));
    }
    EXPECT_EQ("0", GetValue(VOLATILE_KEY, TEXT("Enabled")));
    EXPECT_EQ("0", GetValue(VOLATILE_KEY, TEXT("InstanceCount")));
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
