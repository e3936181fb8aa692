#pragma once

#include <cstddef>

#include <windows.h>

/// Overwrites a text that may be a secret. Compilers leave out writes of memory that is given up; not these.
template <std::size_t cchText>
void Wipe(WCHAR (&szText)[cchText]) noexcept
{
    for (volatile WCHAR& chText : szText) {
        chText = 0;
    }
}

/// Wipes a text at the end of its scope, however that is left.
template <std::size_t cchText>
class CWipeAtEnd
{
public:
    explicit CWipeAtEnd(WCHAR (&szText)[cchText]) noexcept : m_szText(szText) {}
    ~CWipeAtEnd() { Wipe(m_szText); }
    CWipeAtEnd(const CWipeAtEnd&) = delete;
    CWipeAtEnd& operator=(const CWipeAtEnd&) = delete;

private:
    WCHAR (&m_szText)[cchText];
};
