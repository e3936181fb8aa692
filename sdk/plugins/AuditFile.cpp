#include "AuditFile.h"

#include <cstdio>
#include <cstring>

#include "Setting.h"

namespace {

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins\\Audit");
constexpr WCHAR FILE_VALUE[] = TEXT("File");
constexpr int NAME_CAPACITY = 2 * MAX_PATH;

/// A file that is closed when it goes out of scope.
class CFile
{
public:
    CFile() noexcept
    {
        WCHAR szPath[MAX_PATH];
        ReadText(KEY, FILE_VALUE, szPath, MAX_PATH);
        // Tried again: another thread or session holds the file for one line only.
        for (int nTries = 50; *szPath != 0 && !IsOpen() && nTries != 0; --nTries) {
            Open(szPath);
        }
    }
    ~CFile()
    {
        if (IsOpen()) {
            CloseHandle(m_hFile);
        }
    }
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    bool IsOpen() const noexcept { return m_hFile != INVALID_HANDLE_VALUE; }
    HANDLE GetHandle() const noexcept { return m_hFile; }

private:
    void Open(const WCHAR* szPath) noexcept
    {
        m_hFile = CreateFileW(szPath, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
        if (!IsOpen() && GetLastError() == ERROR_SHARING_VIOLATION) {
            Sleep(2);
        }
    }

    HANDLE m_hFile = INVALID_HANDLE_VALUE;
};

/// A name from the configuration, as one word of the line.
void ToWord(const WCHAR* szName, char (&szWord)[NAME_CAPACITY]) noexcept
{
    if (szName == nullptr ||
        WideCharToMultiByte(CP_ACP, 0, szName, -1, szWord, NAME_CAPACITY, nullptr, nullptr) == 0)
    {
        std::strcpy(szWord, "?");
    }
    for (char* pChar = szWord; *pChar != 0; ++pChar) {
        // A name from the configuration must not forge lines of the audit.
        *pChar = static_cast<unsigned char>(*pChar) < ' ' ? '?' : *pChar;
    }
}

} // namespace

CAuditLine::CAuditLine(const char* szCall, const WCHAR* szCalled) noexcept
{
    SYSTEMTIME time;
    GetLocalTime(&time);
    char szWord[NAME_CAPACITY];
    ToWord(szCalled, szWord);
    m_cchHead = std::snprintf(
        m_szLine, CAPACITY, "%04u-%02u-%02u %02u:%02u:%02u.%03u  %s -> %s: ", time.wYear, time.wMonth,
        time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds, szCall, szWord);
    SetResult("did not return");
    if (const CFile file; file.IsOpen()) {
        Write(file.GetHandle());
    }
}

void CAuditLine::Finish(const char* szResult) noexcept
{
    const CFile file;
    if (!file.IsOpen()) {
        return;
    }
    // Somebody may have put the old file away meanwhile: this may be a new one.
    const bool bWritten = IsWritten(file.GetHandle());
    SetResult(szResult);
    m_lPosition = bWritten ? m_lPosition : NOWHERE;
    Write(file.GetHandle());
}

/// The result has one width, so that a later one fits over an earlier one.
void CAuditLine::SetResult(const char* szResult) noexcept
{
    std::snprintf(m_szLine + m_cchHead, static_cast<std::size_t>(CAPACITY - m_cchHead), "%-*.*s\r\n",
                  RESULT_WIDTH, RESULT_WIDTH, szResult);
}

/// Writes the line over its earlier version, or behind the last line if there is none.
void CAuditLine::Write(HANDLE hFile) noexcept
{
    const bool bNew = m_lPosition == NOWHERE;
    const DWORD dwPosition =
        SetFilePointer(hFile, bNew ? 0 : m_lPosition, nullptr, bNew ? FILE_END : FILE_BEGIN);
    DWORD cbWritten = 0;
    if (dwPosition <= 0x7FFFFFFF &&
        WriteFile(hFile, m_szLine, static_cast<DWORD>(std::strlen(m_szLine)), &cbWritten, nullptr) != FALSE)
    {
        m_lPosition = static_cast<LONG>(dwPosition);
    }
}

bool CAuditLine::IsWritten(HANDLE hFile) const noexcept
{
    char data[CAPACITY];
    const DWORD cbLine = static_cast<DWORD>(std::strlen(m_szLine));
    DWORD cbRead = 0;
    return m_lPosition != NOWHERE &&
           SetFilePointer(hFile, m_lPosition, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER &&
           ReadFile(hFile, data, cbLine, &cbRead, nullptr) != FALSE && cbRead == cbLine &&
           std::memcmp(data, m_szLine, cbLine) == 0;
}
