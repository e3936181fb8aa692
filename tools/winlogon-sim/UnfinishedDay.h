#pragma once

#include "StandinGina.h"

/// A day that is being lived: while one exists, a plugin or GINA that ends the process does not end the day
/// well. The process then says in which line that was and ends with status 1.
///
/// Threads: one object at a time, on the thread that lives the day.
class CUnfinishedDay
{
public:
    /// The stand-in GINA is asked to tell, as the system tells every DLL that the process ends; it must stay
    /// loaded as long as this object exists.
    explicit CUnfinishedDay(const StandinInterface& standin);
    ~CUnfinishedDay();
    CUnfinishedDay(const CUnfinishedDay&) = delete;
    CUnfinishedDay& operator=(const CUnfinishedDay&) = delete;

    /// The step of that line of the day begins.
    void BeginStep(int nLine);

private:
    const StandinInterface& m_standin;
};
