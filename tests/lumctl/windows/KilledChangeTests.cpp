#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>

#include "LumctlMachine.h"
#include "WlxInterface.h"

namespace {

/// Ends lumctl when it is about to write to the registry, and loads what Winlogon would load then.
class KilledChanges : public CLumctlMachine
{
protected:
    // This is the machine's own registry, which a real machine needs. Wine's Winlogon key is to stay.
    static void SetUpTestSuite()
    {
        ASSERT_NE(nullptr, GetProcAddress(GetModuleHandleW(TEXT("ntdll.dll")), "wine_get_version"));
    }
    static void TearDownTestSuite() { SetString(WINLOGON_KEY, TEXT("Shell"), TEXT("explorer.exe")); }

    /// Loads what Winlogon would, and follows that to the end of the chain. The stand-ins load nothing, so
    /// their values are followed here; the library must load what it names.
    static void ExpectLoads(const Values& values)
    {
        SCOPED_TRACE(testing::PrintToString(values));
        ASSERT_EQ("", Boot(values, {}));
        std::string next = values.count("Winlogon") != 0 ? values.at("Winlogon") : "msgina.dll";
        while (!next.empty()) {
            const HMODULE hModule = LoadLibraryW(Widen(next).c_str());
            const FARPROC pfn = hModule != nullptr ? GetProcAddress(hModule, "WlxNegotiate") : nullptr;
            ASSERT_NE(nullptr, pfn);
            DWORD dwVersion = 0;
            EXPECT_TRUE(reinterpret_cast<BOOL(WINAPI*)(DWORD, DWORD*)>(reinterpret_cast<void (*)()>(pfn))(
                WLX_VERSION_1_4, &dwVersion));
            const bool bHost = next == "lum_gina.dll";
            next = values.count(next) != 0 ? values.at(next) : "";
            EXPECT_TRUE(!bHost ||
                        GetModuleHandleW(Widen(next.empty() ? "msgina.dll" : next).c_str()) != nullptr);
            FreeLibrary(hModule);
        }
    }

    /// Runs lumctl up to a write. False when it ended before.
    static bool KillAtWrite(const std::string& command, int nWrite)
    {
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES; // and none given
        PROCESS_INFORMATION process = {};
        auto line = Widen("../../../../bin/lumctl.exe chain " + command + " --system .");
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr,
                            nullptr, &startup, &process))
        {
            throw std::runtime_error("lumctl cannot be started");
        }
        DEBUG_EVENT event = {};
        for (bool bKilled = false; WaitForDebugEvent(&event, INFINITE);) {
            const bool bException = event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT;
            const DWORD dwException = bException ? event.u.Exception.ExceptionRecord.ExceptionCode : 0;
            const bool bStop = dwException == EXCEPTION_BREAKPOINT || dwException == EXCEPTION_SINGLE_STEP;
            if (event.dwDebugEventCode == CREATE_PROCESS_DEBUG_EVENT) {
                CloseHandle(event.u.CreateProcessInfo.hFile);
            } else if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) {
                CloseHandle(event.u.LoadDll.hFile);
            } else if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) {
                ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
                CloseHandle(process.hThread);
                CloseHandle(process.hProcess);
                return bKilled;
            } else if (bStop && !bKilled &&
                       StepOver(process, event.u.Exception.ExceptionRecord.ExceptionAddress)) {
                bKilled = --nWrite == 0 && TerminateProcess(process.hProcess, 1) != FALSE;
            }
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId,
                               bException && !bStop ? DBG_EXCEPTION_NOT_HANDLED : DBG_CONTINUE);
        }
        return false;
    }

    /// Stops the program at its writes, from its first stop on. Whether it stopped at one.
    static bool StepOver(const PROCESS_INFORMATION& process, const void* pStop)
    {
        bool bWrite = false;
        for (const char* szFunction : {"RegSetValueExW", "RegDeleteValueW"}) {
            // All programs have the system's DLLs at the same addresses.
            const auto pfn = GetProcAddress(GetModuleHandleW(TEXT("advapi32.dll")), szFunction);
            void* const pCode = reinterpret_cast<void*>(pfn);
            const bool bHere = pStop == pCode;
            WriteProcessMemory(process.hProcess, pCode, bHere ? pCode : "\xCC", 1, nullptr);
            bWrite = bWrite || bHere;
        }
        if (bWrite) {
            CONTEXT context = {};
            context.ContextFlags = CONTEXT_CONTROL;
            GetThreadContext(process.hThread, &context);
            --context.Eip;
            context.EFlags |= 0x100; // one instruction, and then the breakpoint is put back
            SetThreadContext(process.hThread, &context);
        }
        return bWrite;
    }
};

TEST_F(KilledChanges, LeaveAMachineThatComesUp)
{
    const char* szKills = std::getenv("LUM_KILLS");
    const int nKills = szKills != nullptr ? std::atoi(szKills) : 25;
    const char* const GINAS[] = {"lum_gina.dll", "wpnGina.dll", "kvs_gina.dll", "PLinkGina.dll"};
    const char* const CHAINS[] = {"", "lum_gina.dll msgina.dll",
                                  "PLinkGina.dll wpnGina.dll kvs_gina.dll qslogon.dll",
                                  "wpnGina.dll lum_gina.dll kvs_gina.dll msgina.dll",
                                  "kvs_gina.dll PLinkGina.dll wpnGina.dll lum_gina.dll qslogon.dll"};
    std::vector<std::string> commands = {"enable", "disable", "remove wpnGina.dll", "remove qslogon.dll"};
    for (const char* szSaved : CHAINS) {
        commands.push_back("restore " + std::to_string(commands.size()) + ".reg");
        SetValues(ValuesOf(szSaved));
        ASSERT_EQ(STATUS_DONE, Run("chain backup --force ginas/" + commands.back().substr(8)).status);
    }
    SetCurrentDirectoryW(TEXT("ginas"));
    std::mt19937 random(std::random_device{}());
    const auto any = [&](const auto& rows) { return rows[random() % std::size(rows)]; };
    int nRuns = 0;
    int nHalf = 0;
    for (int nKilled = 0; nKilled < nKills; ++nRuns) {
        Values before = ValuesOf(any(CHAINS));
        before.insert({any(GINAS), any(GINAS)});
        before.insert({any(GINAS), any(GINAS)});
        const std::string command = any(commands);
        SCOPED_TRACE(command + " on " + testing::PrintToString(before));
        SetValues(before);
        ExpectLoads(before);
        SetValues(before);
        const bool bKilled = KillAtWrite(command, 1 + static_cast<int>(random() % 5));
        const Values left = GetValues();
        nKilled += bKilled ? 1 : 0;
        nHalf += bKilled && left != before ? 1 : 0;
        ExpectLoads(left);
    }
    std::printf("%d runs, %d killed, %d of them with values written\n", nRuns, nKills, nHalf);
}

} // namespace
