#pragma once

#include <windows.h>

/// One line of the audit file:
///
///     2003-05-12 08:46:40.123  LUMIsLockOk -> msgina.dll: TRUE
///
/// The line is written before the call that it tells of runs, and then says that the call did not return. So
/// one line tells of every call, whatever becomes of it: a fault, an exception that skips the plugin's
/// frames, a machine that stops. HKEY_LOCAL_MACHINE\SOFTWARE\ORX\LUM\Plugins\Audit names the file in the
/// REG_SZ value File; without it nothing is written. Failures are ignored: nobody is kept from logging on
/// because a line cannot be written.
///
/// The file is opened for each line and shared with no other writer meanwhile: other threads, and the
/// Winlogons of other sessions, may write to it too.
class CAuditLine
{
public:
    /// szCall: the export called; szCalled: the DLL that the call goes to.
    CAuditLine(const char* szCall, const WCHAR* szCalled) noexcept;
    CAuditLine(const CAuditLine&) = delete;
    CAuditLine& operator=(const CAuditLine&) = delete;

    /// Writes the result when the call has returned. szResult has at most RESULT_WIDTH characters.
    void Finish(const char* szResult) noexcept;

    static constexpr int RESULT_WIDTH = 26;

private:
    void SetResult(const char* szResult) noexcept;
    void Write(HANDLE hFile) noexcept;
    bool IsWritten(HANDLE hFile) const noexcept;

    static constexpr int CAPACITY = 700;
    static constexpr LONG NOWHERE = -1;

    char m_szLine[CAPACITY];
    int m_cchHead; ///< what stands in front of the result
    LONG m_lPosition = NOWHERE;
};
