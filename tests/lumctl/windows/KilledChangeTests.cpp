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
    /// What keeps the machine from coming up, empty when it comes up. The stand-ins load nothing, so their
    /// values are followed here; the library loads what it would.
    static std::string Load(const Values& values)
    {
        const auto next = [&](const std::string& name) {
            return values.count(name) != 0 ? values.at(name) : "";
        };
        std::set<std::string> loaded;
        std::string from = "Winlogon";
        std::string gina = next(from).empty() ? "msgina.dll" : next(from);
        for (; loaded.insert(gina).second; gina = next(from)) {
            const HMODULE hModule = LoadLibraryW(Widen(gina).c_str());
            const FARPROC pfn = hModule != nullptr ? GetProcAddress(hModule, "WlxNegotiate") : nullptr;
            DWORD dwVersion = 0;
            if (pfn == nullptr || !reinterpret_cast<BOOL(WINAPI*)(DWORD, DWORD*)>(
                                      reinterpret_cast<void (*)()>(pfn))(WLX_VERSION_1_4, &dwVersion))
            {
                return from + " cannot use " + gina;
            }
            from = gina;
            const bool bMakesDo =
                from == "lum_gina.dll" && GetModuleHandleW(Widen(next(from)).c_str()) == nullptr;
            FreeLibrary(hModule);
            if (bMakesDo || from == "msgina.dll" || from == "qslogon.dll") {
                return std::string();
            }
        }
        return from + " loads " + gina;
    }

    /// Any machine that comes up.
    static Values AnyMachine(std::mt19937& random)
    {
        static const std::string NAMES[] = {
            "msgina.dll", "qslogon.dll", "lum_gina.dll", "wpnGina.dll", "kvs_gina.dll", "PLinkGina.dll", ""};
        for (;;) {
            Values values;
            for (const char* szGina :
                 {"Winlogon", "lum_gina.dll", "wpnGina.dll", "kvs_gina.dll", "PLinkGina.dll"}) {
                values[szGina] = NAMES[random() % std::size(NAMES)];
            }
            std::erase_if(values, [](const auto& value) { return value.second.empty(); });
            if (Boot(values, {}).empty()) {
                return values;
            }
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
            DWORD dwAnswer = DBG_CONTINUE;
            if (event.dwDebugEventCode == CREATE_PROCESS_DEBUG_EVENT) {
                CloseHandle(event.u.CreateProcessInfo.hFile);
            }
            if (event.dwDebugEventCode == LOAD_DLL_DEBUG_EVENT) {
                CloseHandle(event.u.LoadDll.hFile);
            }
            if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) {
                ContinueDebugEvent(event.dwProcessId, event.dwThreadId, dwAnswer);
                CloseHandle(process.hThread);
                CloseHandle(process.hProcess);
                return bKilled;
            }
            if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT && !bKilled) {
                const bool bWrite = StepOver(process, event.u.Exception.ExceptionRecord, dwAnswer);
                bKilled = bWrite && --nWrite == 0 && TerminateProcess(process.hProcess, 1) != FALSE;
            }
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, dwAnswer);
        }
        return false;
    }

    /// Stops the program at its writes, from its first stop on. Whether it stopped at one.
    static bool StepOver(const PROCESS_INFORMATION& process, const EXCEPTION_RECORD& exception,
                         DWORD& dwAnswer)
    {
        if (exception.ExceptionCode != EXCEPTION_BREAKPOINT &&
            exception.ExceptionCode != EXCEPTION_SINGLE_STEP) {
            dwAnswer = DBG_EXCEPTION_NOT_HANDLED;
            return false;
        }
        bool bWrite = false;
        for (const char* szFunction : {"RegSetValueExW", "RegDeleteValueW"}) {
            // All programs have the system's DLLs at the same addresses.
            const auto pfn = GetProcAddress(GetModuleHandleW(TEXT("advapi32.dll")), szFunction);
            void* const pCode = reinterpret_cast<void*>(pfn);
            const bool bHere = exception.ExceptionAddress == pCode;
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
    for (const char* szSaved :
         {"kvs_gina.dll wpnGina.dll lum_gina.dll msgina.dll", "PLinkGina.dll qslogon.dll"}) {
        SetValues(ValuesOf(szSaved));
        ASSERT_EQ(STATUS_DONE, Run(std::string("chain backup --force ginas/") + szSaved[0] + ".reg").status);
    }
    SetCurrentDirectoryW(TEXT("ginas"));
    const char* const COMMANDS[] = {
        "enable",        "disable",      "remove wpnGina.dll", "remove kvs_gina.dll", "remove qslogon.dll",
        "restore k.reg", "restore P.reg"};
    const unsigned nSeed = std::random_device{}();
    SCOPED_TRACE(nSeed);
    std::mt19937 random(nSeed);
    int nRuns = 0;
    int nHalf = 0;
    for (int nKilled = 0; nKilled < nKills; ++nRuns) {
        const Values before = AnyMachine(random);
        const char* const szCommand = COMMANDS[random() % std::size(COMMANDS)];
        SetValues(before);
        const bool bKilled = KillAtWrite(szCommand, 1 + static_cast<int>(random() % 5));
        const Values left = GetValues();
        nKilled += bKilled ? 1 : 0;
        nHalf += bKilled && left != before ? 1 : 0;
        EXPECT_EQ("", Load(before)) << testing::PrintToString(before);
        EXPECT_EQ("", Load(left)) << szCommand << " on " << testing::PrintToString(before) << " left "
                                  << testing::PrintToString(left);
    }
    std::printf("%d runs, %d killed, %d of them with values written\n", nRuns, nKills, nHalf);
}

} // namespace
