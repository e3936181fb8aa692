#include "UnfinishedDay.h"

#include <cstdio>

#include "ExitCode.h"
#include "machine/ChildProcess.h"
#include "machine/SetupError.h"

namespace {

constexpr DWORD HANG_MILLISECONDS = 3000;

int s_nLine = 0;
CallEnding s_ending = CallEnding::ComesBack;

[[noreturn]] void EndAsExpected(const char* szWhat)
{
    std::printf("  %4d  %s, as the day expects\n", s_nLine, szWhat);
    std::fflush(stdout);
    Platform::EndThisProcess(EXIT_ENDED);
}

void WINAPI ProcessEnds()
{
    if (s_ending == CallEnding::EndsProcess) {
        EndAsExpected("the process was ended");
    }
    std::fprintf(stderr, "winlogon-sim: the process was ended in line %d, before the day was over\n",
                 s_nLine);
    std::fflush(stderr);
    Platform::EndThisProcess(EXIT_DIFFERENT);
}

struct CWatch
{
    HANDLE hStarted;
    HANDLE hStepOver;
};

DWORD WINAPI WatchStep(LPVOID pContext)
{
    const CWatch watch = *static_cast<const CWatch*>(pContext);
    SetEvent(watch.hStarted);
    if (WaitForSingleObject(watch.hStepOver, HANG_MILLISECONDS) == WAIT_TIMEOUT) {
        EndAsExpected("the call hangs, and the machine is switched off");
    }
    return 0;
}

} // namespace

CUnfinishedDay::CUnfinishedDay(const StandinInterface& standin) : m_standin(standin)
{
    m_standin.SetDetachHook(ProcessEnds);
}

CUnfinishedDay::~CUnfinishedDay()
{
    EndWatch();
    m_standin.SetDetachHook(nullptr);
}

void CUnfinishedDay::BeginStep(const CStep& step)
{
    EndWatch();
    // What the steps before have shown gets out, however the process ends.
    std::fflush(stdout);
    s_nLine = step.nLine;
    s_ending = step.ending;
    if (step.ending == CallEnding::Hangs) {
        m_hStepOver = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        CWatch watch = {CreateEventW(nullptr, TRUE, FALSE, nullptr), m_hStepOver};
        m_hWatch = CreateThread(nullptr, 0, WatchStep, &watch, 0, nullptr);
        if (m_hWatch == nullptr) {
            throw CSetupError("no thread can be started");
        }
        // While a DLL hangs in its DllMain none could start.
        WaitForSingleObject(watch.hStarted, INFINITE);
        CloseHandle(watch.hStarted);
    }
}

void CUnfinishedDay::EndWatch()
{
    if (m_hWatch != nullptr) {
        SetEvent(m_hStepOver);
        WaitForSingleObject(m_hWatch, INFINITE);
        CloseHandle(m_hWatch);
        CloseHandle(m_hStepOver);
        m_hWatch = nullptr;
    }
}
