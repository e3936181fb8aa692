#include "EventSource.h"

#include <vector>

#include "GinaNames.h"

bool WriteToEventLog(DWORD dwEvent, WORD wType, const std::basic_string<WCHAR>& values)
{
    std::vector<const WCHAR*> texts;
    for (std::size_t nAt = 0; nAt < values.size(); nAt = values.find(WCHAR(0), nAt) + 1) {
        texts.push_back(values.c_str() + nAt);
    }
    const HANDLE hSource = RegisterEventSourceW(nullptr, EVENT_SOURCE);
    if (hSource == nullptr) {
        return false;
    }
    ReportEventW(hSource, wType, 0, dwEvent, nullptr, static_cast<WORD>(texts.size()), 0, texts.data(),
                 nullptr);
    DeregisterEventSource(hSource);
    return true;
}
