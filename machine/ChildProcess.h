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

/// Runs a program to its end, without standard input. words[0] is its name, looked for in the folder of the
/// running program first and then where the system looks; the others are its arguments, in which quotes are
/// not supported. ERROR_SUCCESS whatever the program thinks of its work; ERROR_TIMEOUT when it did not end in
/// dwTimeoutMilliseconds (INFINITE: for ever) and has been ended, with what it wrote so far in end; otherwise
/// why it could not be run. Any thread may use it; it blocks the caller alone.
LONG RunChild(const std::vector<std::basic_string<WCHAR>>& words, DWORD dwTimeoutMilliseconds,
              CChildEnd& end);

} // namespace Platform
