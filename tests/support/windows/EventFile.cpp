#include "EventFile.h"

#include "CriticalSection.h"
#include "EventSource.h"

namespace {

CCriticalSection s_lock;
Lines s_lines;

} // namespace

// Takes the place of the library's function of that name, which is in an archive.
bool WriteToEventLog(DWORD dwEvent, WORD wType, const std::basic_string<WCHAR>& values)
{
    std::string line = std::to_string(wType) + " " + std::to_string(dwEvent) + " LUM GINA";
    const char* szSeparator = ": ";
    for (std::size_t nAt = 0; nAt < values.size(); nAt = values.find(WCHAR(0), nAt) + 1) {
        line += szSeparator + Narrow(values.c_str() + nAt);
        szSeparator = " | ";
    }
    const CCriticalSection::CLock lock(s_lock);
    s_lines.push_back(line);
    return true;
}

Lines ReadEvents()
{
    const CCriticalSection::CLock lock(s_lock);
    return s_lines;
}

void ForgetEvents()
{
    const CCriticalSection::CLock lock(s_lock);
    s_lines.clear();
}
