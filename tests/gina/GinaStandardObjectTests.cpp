#include <fstream>
#include <memory>

#include "Exceptions.h"
#include "GinaStandardObject.h"
#include "DllDriver.h"
#include "TestMachine.h"

namespace {

HINSTANCE const HOST = reinterpret_cast<HINSTANCE>(0x1000);
PVOID const CONTEXT = reinterpret_cast<PVOID>(0x2000);

struct CDestroyObject
{
    void operator()(CGinaObject* pObject) const { DestroyListItem(pObject); }
};
using ObjectPtr = std::unique_ptr<CGinaObject, CDestroyObject>;

ObjectPtr MakeObject(const WCHAR* szDLL, DWORD dwLUMVersion = LUM_INTERFACE_VERSION,
                     DWORD dwWlxVersion = WLX_VERSION_1_4)
{
    return ObjectPtr(
        new CGinaStandardObject(LUM_GINA_APP, LUM_GINA_MTM, HOST, szDLL, dwLUMVersion, dwWlxVersion));
}

class GinaStandardObject : public CTestMachine
{
protected:
    GinaStandardObject() : standin(TEXT("standin_gina.dll")), node(LUM_GINA_APP, LUM_GINA_MTM, nullptr, 0) {}

    CStandin standin;
    /// A node at the end of a list.
    GinaNode node;
};

TEST_F(GinaStandardObject, ConstructionFails)
{
    std::ofstream("garbage.dll") << "this is no library, however long it may be\n";
    struct
    {
        const WCHAR* szDLL;
        DWORD dwLUMVersion;
        DWORD dwWlxVersion;
        const char* szLine;
    } const rows[] = {
        {nullptr, 0, 0, "A bad argument was provided, Argument: szGinaDLLName"},
        {TEXT(""), 0, 0, "A bad argument was provided, Argument: dwUsingWlxVersion"},
        {TEXT(""), 0, WLX_VERSION_1_0, "A bad argument was provided, Argument: dwUsingLUMVersion"},
        {TEXT(""), 1, WLX_VERSION_1_0, "A bad argument was provided, Argument: szGinaDLLName"},
        {TEXT("nowhere.dll"), 1, WLX_VERSION_1_4, "Unable to load DLL, Filename: nowhere.dll, Error: 0x7e"},
        {TEXT(".\\garbage"), 1, WLX_VERSION_1_4, "Unable to load DLL, Filename: .\\garbage, Error: 0xc1"},
        {TEXT("standin_gina_no_negotiate.dll"), 1, WLX_VERSION_1_4,
         "Unable to load function from DLL, Function: WlxNegotiate, Error: 0x7f"},
        {TEXT("standin_gina_no_logoff.dll"), 1, WLX_VERSION_1_4,
         "Unable to load function from DLL, Function: WlxLogoff, Error: 0x7f"},
    };
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_THROW(MakeObject(row.szDLL, row.dwLUMVersion, row.dwWlxVersion), CMessage) << row.szLine;
        EXPECT_EQ(Lines{std::string("[EXCEPTION] ") + row.szLine}, [this] {
            Lines lines = Log();
            std::erase_if(lines, [](const std::string& line) { return line.find("[WARNING]") == 0; });
            return lines;
        }());
    }
}

TEST_F(GinaStandardObject, NegotiatedVersionDecidesWhatIsCalled)
{
    standin->SetVersion(WLX_VERSION_1_0);
    const ObjectPtr object = MakeObject(TEXT("standin_gina.dll"));
    EXPECT_EQ(WLX_VERSION_1_0,
              static_cast<int>(object->m_pGinaPluginContext->m_GinaPluginInfo.m_dwWlxVersion));
    standin->Reset();
    EXPECT_TRUE(object->IsLockOk(&node, CONTEXT));
    // Four exports a GINA may do without; the others it would have to have.
    EXPECT_FALSE(object->StartApplication(&node, CONTEXT, nullptr, nullptr, nullptr));
    EXPECT_FALSE(object->ScreenSaverNotify(&node, CONTEXT, nullptr));
    object->DisconnectNotify(&node, CONTEXT);
    object->ReconnectNotify(&node, CONTEXT);
    EXPECT_EQ(4, Count("[EXCEPTION] Null function handle.  Unable to execute function call, Plugin: "
                       "standin_gina.dll"));
    EXPECT_EQ(2, Count("[WARNING] The requested operation failed or it was cancelled"));
    EXPECT_THROW(object->NetworkProviderLoad(&node, CONTEXT, nullptr), CNullFunctionHandleException);
    EXPECT_THROW(object->RemoveStatusMessage(&node, CONTEXT), CNullFunctionHandleException);
    EXPECT_THROW(object->GetConsoleSwitchCredentials(&node, CONTEXT, nullptr), CNullFunctionHandleException);
    EXPECT_EQ(Lines{"WlxIsLockOk"}, standin.Calls());
    // Reported where the operation is, not where exports are looked at.
    EXPECT_EQ(std::string::npos, RawLog().find("GinaObject.cpp"));
}

TEST_F(GinaStandardObject, OptionalExportsMayBeMissing)
{
    ObjectPtr object = MakeObject(TEXT("standin_gina_no_optional.dll"));
    for (const char* szName :
         {"WlxStartApplication", "WlxScreenSaverNotify", "WlxReconnectNotify", "WlxDisconnectNotify"})
    {
        EXPECT_EQ(1, Count(std::string("[EXCEPTION] Unable to load function from DLL, Function: ") + szName +
                           ", Error: 0x7f"));
    }
    object->ReconnectNotify(&node, CONTEXT);
    EXPECT_TRUE(object->IsLogoffOk(&node, CONTEXT));
    // One that is followed is not called.
    GinaNode next(LUM_GINA_APP, LUM_GINA_MTM, nullptr, 0);
    node.pNext = &next;
    EXPECT_THROW(object->ReconnectNotify(&node, CONTEXT), CUnexpectedGinaException);
    const ObjectPtr whole = MakeObject(TEXT("standin_gina.dll"));
    standin->Reset();
    EXPECT_THROW(whole->IsLockOk(&node, CONTEXT), CUnexpectedGinaException);
    EXPECT_EQ(0u, standin->GetRecordCount());
    object.reset();
    EXPECT_EQ(nullptr, GetModuleHandleW(TEXT("standin_gina_no_optional.dll")));
}

} // namespace
