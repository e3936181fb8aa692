// What becomes of a plugin object when the platform fails: the exception that leaves its constructor, the
// line that is written, and a DLL that is not left loaded. For the native target, where failures are
// injected.

#include "EventFile.h"
#include "FailingAllocation.h"
#include "PluginChain.h"
#include "platform/FaultInjection.h"

namespace {

using FailingPluginObject = CPluginChain;

constexpr const char* EXPORTS[] = {
#define PLUGIN_EXPORT(NAME, RESULT) "LUM" #NAME,
    PLUGIN_CALLS(PLUGIN_EXPORT)
#undef PLUGIN_EXPORT
};

/// Counts the calls of the platform that load and free the plugin.
struct CLoadCount
{
    bool IsEven() const { return loads.GetUses() == frees.GetUses(); }

    CFaultInjection loads{PlatformCall::LoadLibraryW, 0, ERROR_SUCCESS};
    CFaultInjection frees{PlatformCall::FreeLibrary, 0, ERROR_SUCCESS};
};

TEST_F(FailingPluginObject, ADllThatCannotBeUsedIsNotLeftLoaded)
{
    struct CRow
    {
        PlatformCall call;
        std::string name; ///< of the DLL or the export
        DWORD dwError;
        std::string line;
    };
    std::vector<CRow> rows = {
        {PlatformCall::LoadLibraryW, "", ERROR_NOT_ENOUGH_MEMORY,
         "Unable to load DLL, Filename: test_plugin_a.dll, Error: 0x8"},
        {PlatformCall::LoadLibraryW, "", 0x45a,
         "Unable to load DLL, Filename: test_plugin_a.dll, Error: 0x45a"},
    };
    for (const char* szExport : EXPORTS) {
        rows.push_back(
            {PlatformCall::GetProcAddress, szExport, ERROR_PROC_NOT_FOUND,
             std::string("Unable to load function from DLL, Function: ") + szExport + ", Error: 0x7f"});
    }
    for (const CRow& row : rows) {
        SCOPED_TRACE(row.line);
        const std::basic_string<WCHAR> name = Widen(row.name);
        ClearLog();
        const CLoadCount count;
        {
            const CFaultInjection fault(row.call, 1, row.dwError, name.empty() ? nullptr : name.c_str());
            EXPECT_THROW(AddPlugin(a.GetName()), CMessage);
        }
        EXPECT_EQ(Lines{"[EXCEPTION] " + row.line}, Log());
        EXPECT_EQ(row.name.empty() ? 0u : 1u, count.frees.GetUses());
        EXPECT_EQ(0u, chain.m_dwCount);
    }
}

TEST_F(FailingPluginObject, ADllThatCannotBeFreedIsReportedOnly)
{
    AddPlugin(a.GetName());
    {
        const CFaultInjection fault(PlatformCall::FreeLibrary, 1, ERROR_INVALID_HANDLE);
        EXPECT_TRUE(chain.Flush());
    }
    EXPECT_EQ(Lines{"[EXCEPTION] Failed to free gina dll library, Error: 0x6"}, Log());
    // The reference that could not be given back.
    const HMODULE hPlugin = LoadLibraryW(a.GetName());
    EXPECT_TRUE(FreeLibrary(hPlugin) && FreeLibrary(hPlugin));
}

TEST_F(FailingPluginObject, WithoutMemoryThereIsNoObjectAndNoLoadedDll)
{
    int nMade = 0;
    const CLoadCount count;
    for (int nBefore = 0; nBefore < 40; ++nBefore) {
        try {
            const CFailingAllocation noMemory(nBefore);
            CGinaObject* pObject = new CGinaPluginObject(LUM_GINA_APP, LUM_GINA_MTM, HOST, a.GetName(),
                                                         LUM_INTERFACE_VERSION, WLX_VERSION_1_4);
            ++nMade;
            EXPECT_TRUE(pObject->QueryPlugin(nullptr, 1, 2, 3)) << nBefore;
            pObject->DeletingDestructor(1);
        } catch (const CMessage&) {
        } catch (const std::bad_alloc&) {
        }
        EXPECT_TRUE(count.IsEven()) << nBefore;
    }
    EXPECT_NE(0, nMade);
    EXPECT_NE(40, nMade);
    // The name is allocated where plugins allocate theirs.
    ClearLog();
    const CFaultInjection fault(PlatformCall::LocalAlloc, 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_THROW(AddPlugin(a.GetName()), CMessage);
    EXPECT_EQ(0u, chain.m_dwCount);
    EXPECT_EQ(1, Count("[EXCEPTION] Memory could not be allocated, Variable: m_szGinaDLL"));
}

// An event that nobody can write delays nothing. What fits is written later, and the rest is lost.
TEST_F(FailingPluginObject, ALogThatDoesNotRunYetGetsTheEventsLater)
{
    SetDword(OWN_KEY, TEXT("EventLog"), 1);
    ForgetEvents();
    {
        const CFaultInjection fault(PlatformCall::RegisterEventSourceW, 1, ERROR_NOT_SUPPORTED, nullptr,
                                    FaultRepeat::FromThenOn);
        const DWORD dwStart = GetTickCount();
        for (DWORD dwEvent = 0; dwEvent < 100; ++dwEvent) {
            ReportHostEvent(HostEvent::Started, {dwEvent + 500});
        }
        EXPECT_GT(400u, GetTickCount() - dwStart);
        while (!fault.HasFired()) {
            Sleep(10);
        }
        EXPECT_EQ(Lines(), ReadEvents());
    }
    // One may have been in the writer's hands.
    for (int n = 0; n < 500 && ReadEvents().size() < 32; ++n) {
        Sleep(10);
    }
    const std::size_t nWritten = CollectEvents().size();
    EXPECT_TRUE(nWritten == 32 || nWritten == 33) << nWritten;
}

} // namespace
