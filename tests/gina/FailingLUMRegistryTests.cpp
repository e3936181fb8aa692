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

/// A row for each value that has an operation to read it.
template <typename Row, typename MakeRow>
std::vector<Row> WithGetters(std::vector<Row> rows, MakeRow makeRow)
{
    rows.push_back(makeRow("GinaDLL", GetGinaDLL));
    rows.push_back(makeRow("Timeout", GetDword<&CLUMRegistry::GetTimeout>));
    rows.push_back(makeRow("PipeInterval", GetDword<&CLUMRegistry::GetPipeInterval>));
    rows.push_back(makeRow("MonitorInterval", GetDword<&CLUMRegistry::GetRegistryMonitorInterval>));
    rows.push_back(makeRow("InstanceCount", GetDword<&CLUMRegistry::GetInstanceCount>));
    return rows;
}

TEST_F(FailingLUMRegistry, AValueThatCannotBeLoadedIsDoneWithout)
{
    struct CRow
    {
        std::string value;
        Operation operation;
        const char* szOutcome;
        Lines lines; ///< of the operation
    };
    const std::string cannotRead = CannotRead("Plugins", "0xffffffff");
    const std::vector<CRow> rows = WithGetters<CRow>(
        {
            {"Plugins", PARSE, "false", {cannotRead, UNHANDLED}},
            {"Plugins", ADD, "false", {cannotRead, UNHANDLED, FAILED, cannotRead, UNHANDLED}},
            // What cannot be read lists nothing, and what is not listed need not be removed.
            {"Plugins", REMOVE, "true", {cannotRead, UNHANDLED, FAILED}},
            // These two are made on the spot.
            {"Enabled", SET_ENABLED, "true", {}},
            {"InstanceCount", COUNT, "true", {}},
        },
        [](const char* szValue, Operation get) {
            return CRow{szValue, get, "read exception", {CannotRead(szValue, "0xffffffff")}};
        });
    for (const CRow& row : rows) {
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
    struct CRow
    {
        Operation operation;
        PlatformCall call;
        DWORD dwUse;
        std::string value;
        const char* szOutcome;
        Lines lines;
    };
    constexpr auto READ = PlatformCall::RegQueryValueExW;
    constexpr auto WRITE = PlatformCall::RegSetValueExW;
    const std::string cannotRead = CannotRead("Plugins", "0x5");
    const std::string cannotWrite = CannotWrite("Plugins", "0x5");
    const std::string noCount = CannotWrite("InstanceCount", "0x5");
    const std::vector<CRow> rows = WithGetters<CRow>(
        {
            {SET_ENABLED, WRITE, 1, "Enabled", "write exception", {CannotWrite("Enabled", "0x5")}},
            {COUNT, WRITE, 1, "InstanceCount", "write exception", {noCount}},
            // A count that cannot be read is not written either.
            {COUNT, READ, 1, "InstanceCount", "true", {CannotRead("InstanceCount", "0x5")}},
            {PARSE, READ, 1, "Plugins", "false", {cannotRead, UNHANDLED}},
            {ADD, READ, 2, "Plugins", "false", {FAILED, cannotRead, UNHANDLED}},
            {ADD, WRITE, 1, "Plugins", "false", {FAILED, cannotWrite, UNHANDLED}},
            {REMOVE, WRITE, 1, "Plugins", "false", {cannotWrite, UNHANDLED}},
            // Whether it is listed cannot be told, and the registry is as it was.
            {REMOVE, READ, 1, "Plugins", "true", {cannotRead, UNHANDLED, FAILED}},
        },
        [](const char* szValue, Operation get) {
            return CRow{get, READ, 1, szValue, "read exception", {CannotRead(szValue, "0x5")}};
        });
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    for (const CRow& row : rows) {
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
