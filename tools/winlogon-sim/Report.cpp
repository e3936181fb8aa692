#include "Report.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::size_t CALL_WIDTH = 31;
constexpr std::size_t REACHED_WIDTH = 36;
constexpr std::size_t CAME_BACK_WIDTH = 33;
const std::string INDENT = "  ";

void PrintLine(const std::string& mark, const std::string& line, const std::string& step,
               const std::string& reached, const std::string& cameBack)
{
    std::string text =
        Format("%-1s %4s  %-*s%-*s  %s", mark.c_str(), line.c_str(), static_cast<int>(CALL_WIDTH),
               step.c_str(), static_cast<int>(REACHED_WIDTH), reached.c_str(), cameBack.c_str());
    text.erase(text.find_last_not_of(' ') + 1);
    std::printf("%s\n", text.c_str());
}

/// The way first, and what arrived at its end below it.
std::vector<std::string> DescribeReached(const CStepReport& step)
{
    std::vector<std::string> lines = Wrap(step.way.empty() ? step.reached : step.way, REACHED_WIDTH);
    if (!step.way.empty() && !step.reached.empty()) {
        for (const std::string& line : Wrap(step.reached, REACHED_WIDTH - INDENT.size())) {
            lines.push_back(INDENT + line);
        }
    }
    return lines;
}

void PrintRow(const CStepReport& step)
{
    const std::vector<std::string> reached = DescribeReached(step);
    const std::vector<std::string> cameBack = Wrap(step.cameBack, CAME_BACK_WIDTH);
    PrintLine(step.differences.empty() ? "" : "!", std::to_string(step.nLine), step.step, reached[0],
              cameBack[0]);
    for (std::size_t nLine = 1; nLine < std::max(reached.size(), cameBack.size()); ++nLine) {
        PrintLine("", "", "", nLine < reached.size() ? reached[nLine] : "",
                  nLine < cameBack.size() ? cameBack[nLine] : "");
    }
}

bool Exists(const std::string& path)
{
    std::FILE* pFile = std::fopen(path.c_str(), "rb");
    return pFile != nullptr && std::fclose(pFile) == 0;
}

} // namespace

void CReport::PrintHeading(const std::string& day, const std::string& gina) const
{
    std::printf("A day of Winlogon with %s: %s\n\n", gina.c_str(), day.c_str());
    PrintLine("", "Line", "Call", "Way, and what reached the GINA", "Came back to Winlogon");
    PrintLine("", "----", std::string(CALL_WIDTH - 2, '-'), std::string(REACHED_WIDTH, '-'),
              std::string(CAME_BACK_WIDTH, '-'));
}

void CReport::PrintStep(const CStepReport& step)
{
    ++m_nSteps;
    m_nDifferent += step.differences.empty() ? 0 : 1;
    PrintRow(step);
    for (const std::string& callback : step.callbacks) {
        std::printf("          calls Winlogon: %s\n", callback.c_str());
    }
    for (const std::string& line : step.output) {
        std::printf("          > %s\n", line.c_str());
    }
    for (const std::string& difference : step.differences) {
        std::printf("        ! %s\n", difference.c_str());
    }
    std::fflush(stdout);
}

void CReport::PrintTotals(std::size_t nCalled, const std::string& traceLog) const
{
    std::printf("\n%d steps, ", m_nSteps);
    if (HasDifferences()) {
        std::printf("%d of them not as they should be", m_nDifferent);
    } else {
        std::printf("all as they should be");
    }
    std::printf("; %u of the %u entry points called.\n", static_cast<unsigned>(nCalled),
                static_cast<unsigned>(STANDIN_CALL_COUNT));
    if (!traceLog.empty()) {
        std::printf("Trace log: %s%s\n", traceLog.c_str(), Exists(traceLog) ? "" : " (nothing was written)");
    }
}
