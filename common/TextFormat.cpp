#include "TextFormat.h"

#include <iterator>

namespace {

/// Appends to a buffer of fixed size and drops what does not fit.
class CBoundedText
{
public:
    CBoundedText(WCHAR* szDest, std::size_t cchDest) noexcept : m_pNext(szDest), m_pLast(szDest + cchDest - 1)
    {
        *m_pNext = 0;
    }

    void Append(WCHAR ch) noexcept
    {
        if (m_pNext < m_pLast) {
            *m_pNext++ = ch;
            *m_pNext = 0;
        }
    }

    template <typename Char>
    void AppendText(const Char* szText) noexcept
    {
        for (; *szText != 0; ++szText) {
            Append(static_cast<WCHAR>(*szText));
        }
    }

    void AppendNumber(DWORD dwValue, DWORD dwBase) noexcept
    {
        char szDigits[11];
        char* pDigit = std::end(szDigits);
        *--pDigit = 0;
        do {
            *--pDigit = "0123456789abcdef"[dwValue % dwBase];
            dwValue /= dwBase;
        } while (dwValue != 0);
        AppendText(pDigit);
    }

private:
    WCHAR* m_pNext;
    WCHAR* m_pLast;
};

bool AppendArgument(CBoundedText& text, WCHAR chConversion, const CFormatArgument& argument) noexcept
{
    const bool bNumber = argument.GetKind() == CFormatArgument::Kind::Number;
    if (chConversion == 's' && argument.GetKind() == CFormatArgument::Kind::Wide) {
        text.AppendText(argument.GetWide() != nullptr ? argument.GetWide() : TEXT("(null)"));
    } else if (chConversion == 's' && !bNumber) {
        text.AppendText(argument.GetNarrow() != nullptr ? argument.GetNarrow() : "(null)");
    } else if (chConversion == 'x' && bNumber) {
        text.AppendNumber(argument.GetNumber(), 16);
    } else if (chConversion == 'd' && bNumber) {
        const bool bNegative = static_cast<LONG>(argument.GetNumber()) < 0;
        if (bNegative) {
            text.Append('-');
        }
        text.AppendNumber(bNegative ? 0 - argument.GetNumber() : argument.GetNumber(), 10);
    } else {
        return false;
    }
    return true;
}

} // namespace

bool FormatText(WCHAR* szDest, std::size_t cchDest, const WCHAR* szFormat,
                std::initializer_list<CFormatArgument> arguments) noexcept
{
    CBoundedText text(szDest, cchDest);
    auto argument = arguments.begin();
    for (; *szFormat != 0; ++szFormat) {
        if (*szFormat != '%') {
            text.Append(*szFormat);
        } else if (*++szFormat == '%') {
            text.Append('%');
        } else if (argument == arguments.end() || !AppendArgument(text, *szFormat, *argument++)) {
            return false;
        }
    }
    return true;
}
