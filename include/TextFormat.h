#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>

#include <windows.h>

/// One value for FormatText. It holds pointers only: the texts must outlive the call.
class CFormatArgument
{
public:
    enum class Kind
    {
        Wide,
        Narrow,
        Number
    };

    CFormatArgument(const WCHAR* szValue) noexcept : m_kind(Kind::Wide), m_szWide(szValue) {}
    /// Plain ASCII, as source file names are.
    CFormatArgument(const char* szValue) noexcept : m_kind(Kind::Narrow), m_szNarrow(szValue) {}
    template <std::integral T>
    CFormatArgument(T value) noexcept : m_kind(Kind::Number), m_dwNumber(static_cast<DWORD>(value))
    {
        static_assert(sizeof(T) <= sizeof(DWORD));
    }

    Kind GetKind() const noexcept { return m_kind; }
    const WCHAR* GetWide() const noexcept { return m_szWide; }
    const char* GetNarrow() const noexcept { return m_szNarrow; }
    DWORD GetNumber() const noexcept { return m_dwNumber; }

private:
    Kind m_kind;
    union {
        const WCHAR* m_szWide;
        const char* m_szNarrow;
        DWORD m_dwNumber;
    };
};

/// Formats as printf does, for the conversions that messages use: %s a text (null shows as "(null)"), %d a
/// signed and %x an unsigned 32-bit number, the latter in lower-case hexadecimal, %% a percent sign. Surplus
/// arguments are ignored.
///
/// The text is cut to cchDest - 1 characters and always terminated; cchDest must not be 0. False when the
/// format has another conversion, or an argument is missing or of the wrong kind; szDest then holds the text
/// up to there. Allocates nothing and never throws.
bool FormatText(WCHAR* szDest, std::size_t cchDest, const WCHAR* szFormat,
                std::initializer_list<CFormatArgument> arguments) noexcept;
