#pragma once

#include <string>

#include <windows.h>

/// Writes one event under the host's source. values: the values of its text, each with a terminating zero.
/// False when the log cannot be reached now. May wait for the log.
bool WriteToEventLog(DWORD dwEvent, WORD wType, const std::basic_string<WCHAR>& values);
