#include "UnfinishedDay.h"

#include <cstdio>
#include <cstdlib>

namespace {

int s_nLine = 0;

void WINAPI FailDay()
{
    std::fprintf(stderr, "winlogon-sim: the process was ended in line %d, before the day was over\n",
                 s_nLine);
    std::fflush(stderr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

CUnfinishedDay::CUnfinishedDay(const StandinInterface& standin) : m_standin(standin)
{
    m_standin.SetDetachHook(FailDay);
}

CUnfinishedDay::~CUnfinishedDay()
{
    m_standin.SetDetachHook(nullptr);
}

void CUnfinishedDay::BeginStep(int nLine)
{
    // What the steps before have shown gets out, however the process ends.
    std::fflush(stdout);
    s_nLine = nLine;
}
