#pragma once

#include <windows.h>

// What the host reports to the Windows event log. A row is: identifier, name, type, English text. %1 and so
// on stand for the values that are reported with it, in their order. The build makes the library's message
// table of these lines, so each is one line of this shape. Identifiers are kept for ever: monitoring knows
// them.

// clang-format off
#define HOST_EVENTS(EVENT) \
    EVENT(1, Started, EVENTLOG_INFORMATION_TYPE, "The GINA chaining host has started. Plugins in service: %1.") \
    EVENT(2, LeftOut, EVENTLOG_WARNING_TYPE, "%1 was left out: %2.") \
    EVENT(3, Faulted, EVENTLOG_ERROR_TYPE, "%1 faulted in %2, with exception code %3.") \
    EVENT(4, Refused, EVENTLOG_WARNING_TYPE, "The plugin %1 refused %2. What stands behind it did not refuse.") \
    EVENT(5, ChainPutRight, EVENTLOG_WARNING_TYPE, "The chain of GINAs was changed to: %1. The host writes it as: %2.") \
    EVENT(6, LeftOutAtSafeStart, EVENTLOG_WARNING_TYPE, "The plugin %1 was left out, since earlier starts of the machine ended in it.")
// clang-format on

enum class HostEvent : DWORD
{
#define HOST_EVENT_ENUMERATOR(ID, NAME, TYPE, TEXT) NAME = ID,
    HOST_EVENTS(HOST_EVENT_ENUMERATOR)
#undef HOST_EVENT_ENUMERATOR
};
