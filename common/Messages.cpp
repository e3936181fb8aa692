#include "Messages.h"

#include <string>

namespace {

// How much longer than its format a message may become, terminator included.
constexpr std::size_t MESSAGE_ROOM = 1087;

} // namespace

CMessage::CMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM) noexcept
    : m_dwLevel(dwLevel), m_bWritten(false),
      m_szAPP(szAPP != nullptr && szMTM != nullptr ? szAPP : ERR_MESSAGE_APP), m_szMTM(szMTM)
{
}

void CMessage::WriteIfUnwritten() noexcept
{
    if (!m_bWritten) {
        Write();
    }
}

void CMessageArgList::Compose(const WCHAR* szFormat,
                              std::initializer_list<CFormatArgument> arguments) noexcept
{
    try {
        const std::size_t cchMessage = std::char_traits<WCHAR>::length(szFormat) + MESSAGE_ROOM;
        m_szMessage.Reset(new WCHAR[cchMessage]);
        m_bFormatted = FormatText(m_szMessage, cchMessage, szFormat, arguments);
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
        WriteLine();
    }
    m_bWritten = true;
}

void CMessageArgList::WriteLine() noexcept
{
    if (m_bFormatted) {
        WriteLogLine(m_szAPP, GetLevelLabel(m_dwLevel), m_szMessage);
    }
}

CDetailedMessage::CDetailedMessage(DWORD dwLevel, const CMessageOrigin& origin, const WCHAR* szText,
                                   bool bWrite, CSourceLocation where) noexcept
    : CMessageArgList(dwLevel, origin.szAPP, origin.szMTM, bWrite, FMT_PLAIN, szText, where.nLine,
                      GetFileName(where.szFile))
{
}

CDetailedMessageWithError::CDetailedMessageWithError(DWORD dwLevel, const CMessageOrigin& origin,
                                                     const WCHAR* szText, DWORD dwError, bool bWrite,
                                                     CSourceLocation where) noexcept
    : CMessageArgList(dwLevel, origin.szAPP, origin.szMTM, bWrite, FMT_ERROR, szText, dwError, where.nLine,
                      GetFileName(where.szFile)),
      m_dwError(dwError)
{
}
