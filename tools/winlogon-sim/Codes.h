#pragma once

#include <optional>
#include <span>
#include <string>

#include <windows.h>

/// A word of the day file and the number that it stands for.
struct CCode
{
    const char* szWord;
    DWORD dwValue;
};

/// Numbers of one kind and the words for them. Plain numbers, decimal or 0x..., are understood as well,
/// up to a highest one.
class CCodes
{
public:
    static constexpr DWORD ANY_NUMBER = 0xFFFFFFFF;
    static constexpr DWORD WORDS_ONLY = 0;

    constexpr CCodes(const char* szKind, std::span<const CCode> codes, DWORD dwMax = ANY_NUMBER)
        : m_szKind(szKind), m_codes(codes), m_dwMax(dwMax)
    {
    }

    /// The number that a word or number stands for; nothing for any other text and for a number above the
    /// highest.
    std::optional<DWORD> Parse(const std::string& text) const;

    /// The word for a number, or the number itself.
    std::string Describe(DWORD dwValue) const;

    const char* GetKind() const { return m_szKind; }

    /// What Parse understands, as an error message or a usage text puts it.
    std::string GetExpected() const;

private:
    const char* m_szKind;
    std::span<const CCode> m_codes;
    DWORD m_dwMax;
};

/// The longest status message that Winlogon has room for, its end included.
inline constexpr DWORD MAX_STATUS_SIZE = 4096;

extern const CCodes VERSIONS;
extern const CCodes BOOLS;
extern const CCodes SAS_TYPES;
extern const CCodes SAS_ACTIONS;
extern const CCodes STATUS_OPTIONS;
extern const CCodes BUFFER_SIZES;
extern const CCodes NUMBERS;
/// The kinds of StandinFailure.
extern const CCodes FAILURES;
