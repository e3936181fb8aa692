#include "Message.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <vector>

#include "guard/FaultGuard.h"

namespace {

// How much longer than its format a message may become, terminator included.
constexpr std::size_t MESSAGE_ROOM = 1087;
// What an internal warning holds besides text and file name, terminator included.
constexpr std::size_t PLACE_ROOM = 19;

template <typename Char>
bool LogWithPlace(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText, int nLine,
                  const Char* szFile) noexcept
{
    try {
        if (szText == nullptr) {
            return false;
        }
        std::vector<WCHAR> text(std::char_traits<WCHAR>::length(szText) +
                                std::char_traits<Char>::length(szFile) + PLACE_ROOM);
        FormatText(text.data(), text.size(), TEXT("%s ( %d ) %s"), {szText, nLine, szFile});
        return WriteLogLine(szTag, szLabel, text.data());
    } catch (...) {
        return false;
    }
}

} // namespace

CMessage::CMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM) noexcept
    : m_dwLevel(dwLevel), m_bWritten(false),
      m_szAPP(szAPP != nullptr && szMTM != nullptr ? szAPP : ERR_MESSAGE_APP), m_szMTM(szMTM)
{
}

CMessage::CMessage(const CMessage& other) noexcept
    : m_dwLevel(other.m_dwLevel), m_bWritten(other.m_bWritten), m_szAPP(other.m_szAPP), m_szMTM(other.m_szMTM)
{
    if (other.m_szMessage != nullptr) {
        const std::size_t cchMessage = std::char_traits<WCHAR>::length(other.m_szMessage) + 1;
        m_szMessage.Reset(new (std::nothrow) WCHAR[cchMessage]);
        if (m_szMessage != nullptr) {
            std::copy_n(&other.m_szMessage[0], cchMessage, &m_szMessage[0]);
        }
    }
}

void CMessage::WriteIfUnwritten() noexcept
{
    try {
        if (!m_bWritten) {
            Write();
        }
    } catch (...) {
        LogInternalWarning(ERR_UNHANDLED_EXCEPTION);
    }
}

void CMessageArgList::Compose(const WCHAR* szFormat,
                              std::initializer_list<CFormatArgument> arguments) noexcept
{
    try {
        // A text may come from a plugin, and its pointer may be bad.
        m_bFormatted = szFormat != nullptr && CallWithinHost([&] {
                           const std::size_t cchMessage =
                               std::char_traits<WCHAR>::length(szFormat) + MESSAGE_ROOM;
                           m_szMessage.Reset(new WCHAR[cchMessage]);
                           return FormatText(m_szMessage, cchMessage, szFormat, arguments);
                       });
        if (!m_bFormatted) {
            LogInternalWarning(ERR_BAD_FORMAT);
        }
    } catch (...) {
        m_bFormatted = false;
        LogInternalWarning(ERR_UNHANDLED_EXCEPTION);
    }
}

void CMessageArgList::Write() noexcept
{
    const bool bEnabled = IsTraceEnabled(m_dwLevel, m_szMTM);
    if (!m_bFormatted) {
        LogInternalWarning(ERR_BAD_FORMAT);
    } else if (bEnabled) {
        WriteLogLine(m_szAPP, GetLevelLabel(m_dwLevel), m_szMessage);
    }
    m_bWritten = true;
}

void CMessageArgList::WriteFormatted(const WCHAR* szFormat,
                                     std::initializer_list<CFormatArgument> arguments) noexcept
{
    if (m_szMessage == nullptr) {
        Compose(szFormat, arguments);
    }
    if (m_bFormatted) {
        WriteLogLine(m_szAPP, GetLevelLabel(m_dwLevel), m_szMessage);
    }
}

CDetailedMessage::CDetailedMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText,
                                   int nLine, const WCHAR* szPath, bool bWrite) noexcept
    : CMessageArgList(dwLevel, szAPP, szMTM, bWrite, FMT_PLAIN, szText, nLine, GetFileName(szPath))
{
}

CDetailedMessage::CDetailedMessage(DWORD dwLevel, const CMessageOrigin& origin, const WCHAR* szText,
                                   bool bWrite, CSourceLocation where) noexcept
    : CMessageArgList(dwLevel, origin.szAPP, origin.szMTM, bWrite, FMT_PLAIN, szText, where.nLine,
                      where.GetFile())
{
}

CDetailedMessageWithError::CDetailedMessageWithError(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM,
                                                     const WCHAR* szText, DWORD dwError, int nLine,
                                                     const WCHAR* szPath, bool bWrite) noexcept
    : CMessageArgList(dwLevel, szAPP, szMTM, bWrite, FMT_ERROR, szText, dwError, nLine, GetFileName(szPath)),
      m_dwError(dwError)
{
}

CDetailedMessageWithError::CDetailedMessageWithError(DWORD dwLevel, const CMessageOrigin& origin,
                                                     const WCHAR* szText, DWORD dwError, bool bWrite,
                                                     CSourceLocation where) noexcept
    : CMessageArgList(dwLevel, origin.szAPP, origin.szMTM, bWrite, FMT_ERROR, szText, dwError, where.nLine,
                      where.GetFile()),
      m_dwError(dwError)
{
}

const WCHAR* GetFileName(const WCHAR* szPath) noexcept
{
    if (szPath == nullptr) {
        CDetailedMessage(LEVEL_EXCEPTION, {ERR_MESSAGE_APP, nullptr}, TEXT("Null source file"));
        return nullptr;
    }
    const std::basic_string_view<WCHAR> path(szPath);
    return szPath + (path.find_last_of('\\') + 1);
}

bool LogMessage(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText, int nLine,
                const WCHAR* szPath) noexcept
{
    const WCHAR* szFile = GetFileName(szPath);
    return LogWithPlace(szTag, szLabel, szText, nLine, szFile != nullptr ? szFile : TEXT(""));
}

void LogInternalWarning(const WCHAR* szText, CSourceLocation where) noexcept
{
    LogWithPlace(ERR_MESSAGE_APP, GetLevelLabel(LEVEL_WARNING), szText, where.nLine, where.GetFile());
}
