#pragma once

/// Where a statement stands: what the trace log shows as line and file.
///
/// std::source_location would do, but clang 14 has none with this standard library.
struct CSourceLocation
{
    const char* szPath;
    int nLine;

    /// As a default argument: the place of the call, also from inside templates.
    static constexpr CSourceLocation Current(const char* szPath = __builtin_FILE(),
                                             int nLine = __builtin_LINE()) noexcept
    {
        return {szPath, nLine};
    }

    /// The file without its folders. Compilers write paths with either separator.
    constexpr const char* GetFile() const noexcept
    {
        const char* szFile = szPath;
        for (const char* pNext = szPath; *pNext != 0; ++pNext) {
            szFile = *pNext == '\\' || *pNext == '/' ? pNext + 1 : szFile;
        }
        return szFile;
    }
};
