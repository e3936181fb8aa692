#pragma once

#include <initializer_list>

#include <windows.h>

#include "DetailFormats.h"
#include "ErrorTexts.h"
#include "GinaNames.h"
#include "Owned.h"
#include "SourceLocation.h"
#include "TextFormat.h"
#include "TraceLog.h"

// Every report of the system, a trace line as much as an error, is an object of this family. Building
// a message formats its text and writes it to the trace log, so that a thrown error has been logged
// by the time it is caught. No constructor, destructor or Write of this system's messages lets an exception
// escape.

/// Who reports: the application tag, which selects the log file, and the registry key (relative to
/// HKEY_LOCAL_MACHINE) that holds the level mask. The strings are not owned and must outlive the user.
struct CMessageOrigin
{
    const WCHAR* szAPP;
    const WCHAR* szMTM;
};

/// The part of a path after its last backslash, the whole path when it holds none. For a null path null, and
/// an exception message under "MESSAGE_APP". Never throws.
const WCHAR* GetFileName(const WCHAR* szPath) noexcept;

/// The trace log's own report of trouble inside it: no mask is consulted, and the place of the statement is
/// appended to the text. True when it was written. Never throws.
bool LogMessage(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText, int nLine,
                const WCHAR* szPath) noexcept;

/// The same as a warning under "MESSAGE_APP".
void LogInternalWarning(const WCHAR* szText, CSourceLocation where = CSourceLocation::Current()) noexcept;

/// What this system reports under.
inline constexpr CMessageOrigin LUM_GINA_ORIGIN{LUM_GINA_APP, LUM_GINA_MTM};

/// The root of the family. Messages are destroyed as the type they were made or thrown as.
class CMessage
{
public:
    /// A message without a key belongs to nobody's mask: its tag becomes "MESSAGE_APP", as does a null tag.
    CMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM) noexcept;

    /// Writes the text to the trace log if its level is enabled; m_bWritten is true from then on.
    virtual void Write() = 0;

    /// What a handler does with a message that it caught: Write, unless that has been done.
    void WriteIfUnwritten() noexcept;

    DWORD m_dwLevel;
    bool m_bWritten;
    const WCHAR* m_szAPP;
    const WCHAR* m_szMTM;
    /// The formatted text; null when there was no memory, and for a trace statement until it is written.
    COwnedText m_szMessage;

protected:
    /// The copy has a text of its own; none when there is no memory for it.
    CMessage(const CMessage& other) noexcept;
    CMessage(CMessage&&) noexcept = default;
    ~CMessage() = default;
};

/// A message made with a format and its arguments (see FormatText).
class CMessageArgList : public CMessage
{
public:
    /// The text is cut at the length of the format plus 1086 characters.
    template <typename... Args>
    CMessageArgList(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM, bool bWrite, const WCHAR* szFormat,
                    const Args&... args) noexcept
        : CMessage(dwLevel, szAPP, szMTM), m_bFormatted(true)
    {
        Compose(szFormat, {CFormatArgument(args)...});
        if (bWrite && m_bFormatted) {
            Write();
        }
    }

    void Write() noexcept override;

    bool m_bFormatted;

protected:
    /// For messages that are formatted when they are first written: no text yet.
    CMessageArgList(DWORD dwLevel, const CMessageOrigin& origin) noexcept
        : CMessage(dwLevel, origin.szAPP, origin.szMTM), m_bFormatted(true)
    {
    }

    /// Formats the text, unless that has been done, and writes it, whatever the mask.
    void WriteFormatted(const WCHAR* szFormat, std::initializer_list<CFormatArgument> arguments) noexcept;

private:
    void Compose(const WCHAR* szFormat, std::initializer_list<CFormatArgument> arguments) noexcept;
};

/// A text with the place it was reported at.
class CDetailedMessage : public CMessageArgList
{
public:
    CDetailedMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText, int nLine,
                     const WCHAR* szPath, bool bWrite) noexcept;
    CDetailedMessage(DWORD dwLevel, const CMessageOrigin& origin, const WCHAR* szText, bool bWrite = true,
                     CSourceLocation where = CSourceLocation::Current()) noexcept;
};

/// A text with an error code of the platform and the place it was reported at.
class CDetailedMessageWithError : public CMessageArgList
{
public:
    CDetailedMessageWithError(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM, const WCHAR* szText,
                              DWORD dwError, int nLine, const WCHAR* szPath, bool bWrite) noexcept;
    CDetailedMessageWithError(DWORD dwLevel, const CMessageOrigin& origin, const WCHAR* szText, DWORD dwError,
                              bool bWrite = true,
                              CSourceLocation where = CSourceLocation::Current()) noexcept;

    DWORD m_dwError;
};
