#include "Call.h"
#include "FileObject.h"
#include "PipeDirectory.h"
#include "Text.h"

using namespace Native;

namespace {

/// The open log, with the name of who writes to it.
class CEventSource : public CFileObject
{
public:
    explicit CEventSource(LPCWSTR szSource)
        : CFileObject({GetPrivateDirectory() + "/events.log", FILE_APPEND_DATA,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS}),
          m_source(ToUtf8(szSource))
    {
    }

    const std::string& GetSource() const noexcept { return m_source; }

private:
    const std::string m_source;
};

} // namespace

HANDLE WINAPI RegisterEventSourceW(LPCWSTR szServer, LPCWSTR szSource) noexcept
{
    return LastErrorCall<HANDLE>(PlatformCall::RegisterEventSourceW, szSource, nullptr, [&] {
        Require(szServer == nullptr, ERROR_NOT_SUPPORTED);
        return HandleTable::Add(std::make_shared<CEventSource>(szSource));
    });
}

BOOL WINAPI ReportEventW(HANDLE hSource, WORD wType, WORD, DWORD dwEvent, PSID, WORD wTexts, DWORD,
                         LPCWSTR* pszTexts, LPVOID) noexcept
{
    return LastErrorCall(PlatformCall::ReportEventW, nullptr, FALSE, [&] {
        const auto pSource = HandleTable::Find<CEventSource>(hSource);
        Require(pSource != nullptr, ERROR_INVALID_HANDLE);
        std::string line = std::to_string(wType) + " " + std::to_string(dwEvent) + " " + pSource->GetSource();
        const char* szSeparator = ": ";
        for (WORD w = 0; w < wTexts; ++w) {
            line += szSeparator + ToUtf8(pszTexts[w]);
            szSeparator = " | ";
        }
        line += "\n";
        pSource->Write(line.data(), static_cast<DWORD>(line.size()));
        return TRUE;
    });
}

BOOL WINAPI DeregisterEventSource(HANDLE hSource) noexcept
{
    return LastErrorCall(PlatformCall::DeregisterEventSource, nullptr, FALSE, [&] {
        Require(HandleTable::Close(hSource), ERROR_INVALID_HANDLE);
        return TRUE;
    });
}
