#pragma once

#include <initializer_list>

#include "EventTable.h"
#include "TextFormat.h"

/// Reports an event to the Windows event log, if the value EventLog of the own key is not 0; otherwise does
/// nothing. values: what %1 and so on of the event's text stand for, texts or numbers (in decimal), as in
///
///     ReportHostEvent(HostEvent::LeftOut, {szPlugin, TEXT("it refused its initialisation")});
///
/// They are copied, each cut after 1023 characters. Never pass a password or a text of the user.
///
/// Any thread, also while the library is being unloaded or the configuration cannot be read. Never waits for
/// the log: a thread writes the event. That thread tries for two minutes, since the log may not run yet while
/// the machine starts, and then gives up. The same event with the same values is reported once a minute. An
/// event is lost if 32 are waiting, if there is no memory, or if no thread can be made. Leaves no trace
/// lines.
void ReportHostEvent(HostEvent event, std::initializer_list<CFormatArgument> values) noexcept;

/// For the unloading of the library: what is reported from now on is lost. Waits up to two seconds for the
/// thread that writes events. If it has not ended then, it is suspended for good: the code that it would
/// return to goes away.
void CloseEventLog() noexcept;
