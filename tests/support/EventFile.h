#pragma once

#include "EventLog.h"
#include "TestMachine.h"

// What the host has reported to the event log, for a suite that has EventFile.cpp among its sources. Natively
// that is the platform's own file. On Windows the suite has a log of its own, since Wine keeps none.

/// A line for each event, oldest first: "TYPE IDENTIFIER SOURCE: TEXT | TEXT".
Lines ReadEvents();

void ForgetEvents();

/// Waits until all is written that was reported, and takes it out. For that it reports one event more.
inline Lines CollectEvents()
{
    static DWORD dwEnds = 1000;
    ReportHostEvent(HostEvent::Started, {++dwEnds});
    const std::string end = "4 1 LUM GINA: " + std::to_string(dwEnds);
    Lines lines = ReadEvents();
    for (int n = 0; n < 500 && (lines.empty() || lines.back() != end); ++n) {
        Sleep(10);
        lines = ReadEvents();
    }
    EXPECT_FALSE(lines.empty());
    if (!lines.empty()) {
        EXPECT_EQ(end, lines.back());
        lines.pop_back();
    }
    ForgetEvents();
    return lines;
}
