#pragma once

/// Where a statement stands: what the trace log shows as line and file.
///
/// std::source_location would do, but clang 14 has not got it for this library.
struct CSourceLocation
{
    const char* szFile;
    int nLine;

    /// As a default argument: the place of the call, also from inside templates.
    static constexpr CSourceLocation Current(const char* szFile = __builtin_FILE(),
                                             int nLine = __builtin_LINE()) noexcept
    {
        return {szFile, nLine};
    }
};
