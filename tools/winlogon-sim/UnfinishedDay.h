#pragma once

#include "DayFile.h"
#include "StandinGina.h"

/// A day that may end in the middle: a plugin or the GINA ends the process, or a call hangs. Exists once at a
/// time.
class CUnfinishedDay
{
public:
    /// If the process is ended while this exists, it says in which line, and ends with EXIT_ENDED if the day
    /// expects it there, otherwise with 1.
    explicit CUnfinishedDay(const StandinInterface& standin);
    ~CUnfinishedDay();
    CUnfinishedDay(const CUnfinishedDay&) = delete;
    CUnfinishedDay& operator=(const CUnfinishedDay&) = delete;

    /// A step begins. If the day expects that it hangs, and it does so for three seconds, the process ends
    /// with EXIT_ENDED.
    void BeginStep(const CStep& step);

private:
    void EndWatch();

    const StandinInterface& m_standin;
    HANDLE m_hStepOver = nullptr;
    HANDLE m_hWatch = nullptr;
};
