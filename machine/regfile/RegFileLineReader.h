#pragma once

#include "RegFileLines.h"

namespace Platform {

/// Reads one line of a .reg file from left to right. Whatever does not fit throws CRegFileError.
class CRegFileLineReader
{
public:
    explicit CRegFileLineReader(const CRegFileLine& line) : m_line(line) {}

    [[noreturn]] void Fail(const char* szText) const;

    bool AtEnd() const { return m_nPosition == m_line.text.size(); }
    void SkipBlanks();

    /// Takes the text if the line goes on with it, in any case of its letters.
    bool Take(const WideText& text);

    /// Takes the text, or fails with the complaint.
    void Expect(const WideText& text, const char* szComplaint);

    /// Takes the blanks at the end, and fails if there is more.
    void ExpectEnd();

    /// A text in quotes, the first of which has been taken.
    WideText TakeQuoted();

    /// A number of at most that many hexadecimal digits.
    DWORD TakeHex(int nMaxDigits);

    /// What is left of the line.
    WideText TakeRest();

private:
    WCHAR Peek() const { return m_line.text[m_nPosition]; }

    const CRegFileLine& m_line;
    std::size_t m_nPosition = 0;
};

} // namespace Platform
