#include "RegFileLineReader.h"

#include "machine/RegFile.h"

namespace Platform {
namespace {

int GetHexDigit(WCHAR ch)
{
    if (ch >= '0' && ch <= '9') {
        return ch - '0';
    }
    const int nLetter = (ch | 0x20) - 'a';
    return nLetter >= 0 && nLetter < 6 ? nLetter + 10 : -1;
}

} // namespace

void CRegFileLineReader::Fail(const char* szText) const
{
    throw CRegFileError{"line " + std::to_string(m_line.nNumber) + ": " + szText};
}

void CRegFileLineReader::SkipBlanks()
{
    while (!AtEnd() && (Peek() == ' ' || Peek() == '\t')) {
        ++m_nPosition;
    }
}

bool CRegFileLineReader::Take(const WideText& text)
{
    const bool bTaken = CompareNoCase(m_line.text.substr(m_nPosition, text.size()), text) == 0;
    m_nPosition += bTaken ? text.size() : 0;
    return bTaken;
}

void CRegFileLineReader::Expect(const WideText& text, const char* szComplaint)
{
    if (!Take(text)) {
        Fail(szComplaint);
    }
}

void CRegFileLineReader::ExpectEnd()
{
    SkipBlanks();
    if (!AtEnd()) {
        Fail("something is left over at the end");
    }
}

WideText CRegFileLineReader::TakeQuoted()
{
    WideText text;
    for (; !AtEnd() && Peek() != '"'; ++m_nPosition) {
        if (Peek() == '\\') {
            ++m_nPosition;
            if (AtEnd() || (Peek() != '\\' && Peek() != '"')) {
                Fail("only \\\\ and \\\" may follow a backslash in a text");
            }
        }
        text += Peek();
    }
    Expect(TEXT("\""), "a text without its closing quote");
    return text;
}

DWORD CRegFileLineReader::TakeHex(int nMaxDigits)
{
    DWORD dwNumber = 0;
    int nDigits = 0;
    for (; !AtEnd() && GetHexDigit(Peek()) >= 0; ++m_nPosition, ++nDigits) {
        dwNumber = dwNumber << 4 | static_cast<DWORD>(GetHexDigit(Peek()));
    }
    if (nDigits == 0 || nDigits > nMaxDigits) {
        Fail("a hexadecimal number is missing or too long");
    }
    return dwNumber;
}

WideText CRegFileLineReader::TakeRest()
{
    WideText rest = m_line.text.substr(m_nPosition);
    m_nPosition = m_line.text.size();
    return rest;
}

} // namespace Platform
