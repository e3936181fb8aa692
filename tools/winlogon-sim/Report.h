#pragma once

#include "Runner.h"

/// Prints a day as a table, one step after the other, and its totals.
class CReport
{
public:
    void PrintHeading(const std::string& day, const std::string& gina) const;
    void PrintStep(const CStepReport& step);
    /// traceLog is the path of the trace log; empty when there is none.
    void PrintTotals(std::size_t nCalled, const std::string& traceLog) const;

    bool HasDifferences() const { return m_nDifferent != 0; }

private:
    int m_nSteps = 0;
    int m_nDifferent = 0;
};
