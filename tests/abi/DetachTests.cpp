// What is left of the library, and of what it has loaded, when it is unloaded: whatever happened before.

#include <algorithm>
#include <string>
#include <vector>

#include <windows.h>
#include <winwlx.h>

#include "ChainPlugin.h"
#include "ControlClient.h"
#include "Handles.h"
#include "Library.h"
#include "Runner.h"
#include "TestMachine.h"
#include "Thread.h"

namespace {

constexpr char LIBRARY[] = "lum_gina.dll";
constexpr char PLUGIN[] = "abi_chain_plugin.dll";
constexpr char STANDIN[] = "standin_gina.dll";

// The compiler's runtime never closes the semaphore of a lock that it takes when a library is loaded: the
// library's and the stand-in GINA's.
constexpr DWORD KEPT_BY_RUNTIMES = 2;

constexpr char NEGOTIATED[] = "WlxNegotiate\n";
constexpr char IN_SERVICE[] = "WlxNegotiate\nWlxInitialize\n";

/// What happens before the library is unloaded, and what is in the log of the unloading because of that.
struct CDetachRow
{
    const char* szName;
    std::string steps;
    AbiCall call = ABI_ActivateUserShell;
    AbiDeed deed = ABI_PASS_ON;
    const char* szReport = "";
    bool bFreedByOthers = false;
};

const CDetachRow ROWS[] = {
    {"stopped", IN_SERVICE + std::string("WlxShutdown\n")},
    {"never called", ""},
    {"negotiated only", NEGOTIATED},
    {"its threads run", IN_SERVICE},
    {"the GINA has faulted, and the threads run",
     IN_SERVICE + std::string("WlxShutdown gina fails READ_NULL\n")},
    {"the plugin's friendly name cannot be freed", NEGOTIATED, ABI_Negotiate, ABI_NAME_BY_CONSTANT,
     "[WARNING] Unable to delete variable, Variable: m_szFriendlyName"},
    {"the plugin faults when it is unloaded", NEGOTIATED, ABI_Unload, ABI_READ_NULL},
    {"the plugin throws when it is unloaded", NEGOTIATED, ABI_Unload, ABI_THROW},
    {"the plugin is there no longer", NEGOTIATED, ABI_ActivateUserShell, ABI_PASS_ON,
     "[EXCEPTION] Failed to free gina dll library, Error: 0x7e", true},
};

DWORD GetFreeTlsIndex()
{
    const DWORD dwIndex = TlsAlloc();
    TlsFree(dwIndex);
    return dwIndex;
}

class Detach : public CTestMachine
{
protected:
    Detach()
    {
        SetString(OWN_KEY, TEXT("GinaDLL"), Widen(STANDIN).c_str());
        SetString(OWN_KEY, TEXT("Plugins"), Widen(PLUGIN).c_str());
        SetDword(OWN_KEY, TEXT("PipeInterval"), 1);
        SetTraceMask(0xFFF);
    }

    /// Lives the steps. The library alone has the plugin then.
    void Live(CRunner& runner, const std::string& steps, AbiCall call, AbiDeed deed)
    {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, VOLATILE_KEY); // the threads belong to the first instance
        CLibrary plugin;
        plugin.Load(PLUGIN);
        pState = reinterpret_cast<PFN_ABI_CHAIN>(reinterpret_cast<void*>(plugin.FindExport("AbiChain")))();
        pState->nCall = call;
        pState->deed = deed;
        for (const CStep& step : ParseDay("Attach\n" + steps, "day")) {
            runner.Run(step);
        }
        ClearLog();
    }

    void LiveAndDetach(const CDetachRow& row)
    {
        CRunner runner(LIBRARY, STANDIN, WLX_VERSION_1_4, "");
        Live(runner, row.steps, row.call, row.deed);
        if (row.bFreedByOthers) {
            FreeLibrary(GetModuleHandleW(Widen(PLUGIN).c_str()));
        }
        runner.Run(ParseDay("Attach\nDetach", "day").at(1));
    }

    static Lines GetLoaded()
    {
        Lines loaded;
        for (const char* szDll : {LIBRARY, PLUGIN, STANDIN}) {
            if (GetModuleHandleW(Widen(szDll).c_str()) != nullptr) {
                loaded.push_back(szDll);
            }
        }
        return loaded;
    }

    /// The classes of what belongs to the host, in the order of the log.
    static Lines GetDestroyed(const Lines& log)
    {
        Lines destroyed;
        const auto begin = std::find(log.begin(), log.end(), "[DESTRUCTION ENTRY] CLUMGina::~CLUMGina");
        for (auto line = begin; line != log.end(); ++line) {
            for (const std::string member :
                 {"CLUMPipeThreadObject", "CLUMRegMonitorThreadObject", "CRegistryManager", "CLUMObject",
                  "CWinlogonObject", "CGinaPluginObject", "CGinaStandardObject", "CLUMRegistry",
                  "CWinlogonRegistry", "CGinaContext", "CLUMGina"})
            {
                if (*line == "[DESTRUCTION EXIT] " + member + "::~" + member) {
                    destroyed.push_back(member);
                }
            }
        }
        return destroyed;
    }

    static void ExpectWhole(const Lines& log, bool bObjects)
    {
        ASSERT_GE(log.size(), 3u);
        EXPECT_EQ("[ENTRY] LUMDLLMain::DETACH", log[0]);
        Lines destroyed = {"CLUMPipeThreadObject", "CLUMRegMonitorThreadObject", "CRegistryManager",
                           "CLUMObject", "CWinlogonObject"};
        if (bObjects) {
            destroyed.insert(destroyed.end(), {"CGinaPluginObject", "CGinaStandardObject"});
        }
        destroyed.insert(destroyed.end(), {"CLUMRegistry", "CWinlogonRegistry", "CGinaContext", "CLUMGina"});
        EXPECT_EQ(destroyed, GetDestroyed(log));
        EXPECT_EQ("[NOTIFICATION] Gina has been detached.", *(log.end() - 2));
        EXPECT_EQ("[EXIT ] LUMDLLMain::DETACH, Return: 0x1", log.back());
    }

    AbiChainState* pState = nullptr;
};

TEST_F(Detach, DestroysTheHostAndLeavesNothingBehind)
{
    LiveAndDetach(ROWS[0]); // what the process keeps of the first time
    for (const CDetachRow& row : ROWS) {
        SCOPED_TRACE(row.szName);
        const DWORD dwHandles = CountHandles();
        const DWORD dwTlsIndex = GetFreeTlsIndex();
        LiveAndDetach(row);
        EXPECT_EQ(dwHandles + KEPT_BY_RUNTIMES, CountHandles());
        EXPECT_EQ(dwTlsIndex, GetFreeTlsIndex());
        EXPECT_EQ(Lines(), GetLoaded());
        ExpectWhole(Log(), !row.steps.empty());
        EXPECT_EQ(*row.szReport != 0, Count(row.szReport) == 1) << row.szReport;
        EXPECT_EQ(Lines(), InternalLog());
    }
}

TEST_F(Detach, HasLoadedPluginsWithoutMessageBoxes)
{
    constexpr UINT QUIET = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
    CRunner runner(LIBRARY, STANDIN, WLX_VERSION_1_4, "");
    for (const CStep& step : ParseDay("Attach\nWlxNegotiate", "day")) {
        runner.Run(step);
    }
    CLibrary plugin;
    plugin.Load(PLUGIN);
    pState = reinterpret_cast<PFN_ABI_CHAIN>(reinterpret_cast<void*>(plugin.FindExport("AbiChain")))();
    EXPECT_EQ(SEM_NOGPFAULTERRORBOX | QUIET, pState->nErrorModeAtLoading);
    EXPECT_EQ(UINT(SEM_NOGPFAULTERRORBOX), SetErrorMode(0));
    runner.Run(ParseDay("Attach\nDetach", "day").at(1));
}

TEST_F(Detach, DestroysTheHostAlsoWhenTheProcessEnds)
{
    const auto endProcess = [this] {
        CRunner runner(LIBRARY, STANDIN, WLX_VERSION_1_4, "");
        Live(runner, IN_SERVICE, ABI_Unload, ABI_READ_NULL);
        ExitProcess(7);
    };
    EXPECT_EXIT(endProcess(), testing::ExitedWithCode(7), "");
    ExpectWhole(Log(), true);
}

TEST_F(Detach, LeavesTheHostAloneThatAThreadIsIn)
{
    CRunner runner(LIBRARY, STANDIN, WLX_VERSION_1_4, "");
    Live(runner, IN_SERVICE, ABI_QueryPlugin, ABI_WAIT);
    {
        CThread client([] {
            CControlQuery query;
            query.target = Widen(PLUGIN);
            CControlClient().QueryPlugin(query);
        });
        while (pState->nWaiting == 0) {
            Sleep(1);
        }
        runner.Run(ParseDay("Attach\nDetach", "day").at(1));
        EXPECT_EQ((Lines{PLUGIN, STANDIN}), GetLoaded());
        EXPECT_EQ("[WARNING] Could not delete LUMGina object on DLL_PROCESS_DETACH", Log().back());
        // What it would come back to is there no longer.
        pState->nWaiting = -1;
    }
    Sleep(100);
    EXPECT_EQ(-1, pState->nWaiting);
}

} // namespace
