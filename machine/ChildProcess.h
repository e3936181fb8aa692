#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace Platform {

/// How a program ended.
struct CChildEnd
{
    DWORD dwExitStatus = 0;
    /// What it wrote to standard output and standard error, in the order in which it came.
    std::string output;
};

/// Runs a program to its end, without standard input. words[0] is its name, looked for first in the folder of
/// the running program and then where the system looks. The others are its arguments; quotes in them are not
/// supported. Returns ERROR_SUCCESS for a program that ended, whatever its exit status; ERROR_TIMEOUT for one
/// that did not end in dwTimeoutMilliseconds (INFINITE: for ever) and was ended, with its output so far in
/// end; otherwise why it could not be run. Any thread may use it; it blocks the caller alone. show, when
/// given, gets the output as it comes, and may take it away.
LONG RunChild(
    const std::vector<std::basic_string<WCHAR>>& words, DWORD dwTimeoutMilliseconds, CChildEnd& end,
    void (*show)(std::string& output) = [](std::string&) {});

/// Ends this process at once, whatever its threads hold and wait for. What is in the buffers of files is
/// lost.
[[noreturn]] void EndThisProcess(DWORD dwExitStatus);

} // namespace Platform
