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

// Every report is an object of this family, a trace line as well as an error. Constructing a message formats
// its text and writes it to the trace log, so an exception has been logged before anybody catches it. No
// constructor, destructor or Write of these messages throws.

/// Who reports: the application tag, which selects the log file, and the registry key (below
/// HKEY_LOCAL_MACHINE) that holds the level mask. The strings are not owned and must outlive every use.
struct CMessageOrigin
{
    const WCHAR* szAPP;
    const WCHAR* szMTM;
};

/// The part of a path after its last backslash, or the whole path if it has none. For a null path, returns
/// null and writes an exception message under "MESSAGE_APP". Never throws.
const WCHAR* GetFileName(const WCHAR* szPath) noexcept;

/// Reports trouble inside the trace log itself. Looks up no mask, and appends the place of the statement to
/// the text. True when it was written. Never throws.
bool LogMessage(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText, int nLine,
                const WCHAR* szPath) noexcept;

/// The same as a warning under "MESSAGE_APP".
void LogInternalWarning(const WCHAR* szText, CSourceLocation where = CSourceLocation::Current()) noexcept;

/// The tag and key of this library's messages.
inline constexpr CMessageOrigin LUM_GINA_ORIGIN{LUM_GINA_APP, LUM_GINA_MTM};

/// The root of the family. The destructor is not virtual: a message is destroyed as the type that it was made
/// or thrown as.
class CMessage
{
public:
    /// Without a key there is no mask to look up, so the tag becomes "MESSAGE_APP"; so does a null tag.
    CMessage(DWORD dwLevel, const WCHAR* szAPP, const WCHAR* szMTM) noexcept;

    /// Writes the text to the trace log if its level is enabled; m_bWritten is true from then on.
    virtual void Write() = 0;

    /// For a handler: writes the message that it caught, unless it has been written.
    void WriteIfUnwritten() noexcept;

    DWORD m_dwLevel;
    bool m_bWritten;
    const WCHAR* m_szAPP;
    const WCHAR* m_szMTM;
    /// The formatted text; null when there was no memory, and for a trace statement until it is written.
    COwnedText m_szMessage;

protected:
    /// Copies the text as well. If there is no memory for it, the copy has none.
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
    /// For messages that are formatted only when they are written: there is no text yet.
    CMessageArgList(DWORD dwLevel, const CMessageOrigin& origin) noexcept
        : CMessage(dwLevel, origin.szAPP, origin.szMTM), m_bFormatted(true)
    {
    }

    /// Formats the text if that has not been done, and writes it without looking at the mask.
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

/// A text with a Windows error code and the place it was reported at.
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
