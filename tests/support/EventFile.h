#pragma once

#include "TestMachine.h"

// What the host has reported to the event log, for a suite that has EventFile.cpp among its sources. Natively
// that is the platform's own file. On Windows the suite has a log of its own, since Wine keeps none.

/// A line for each event, oldest first: "TYPE IDENTIFIER SOURCE: TEXT | TEXT".
Lines ReadEvents();

void ForgetEvents();
