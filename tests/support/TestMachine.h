#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "GinaNames.h"

using Lines = std::vector<std::string>;

// What operations write that fail, and those that end with an exception.
inline constexpr char FAILED[] = "[WARNING] The requested operation failed or it was cancelled";
inline constexpr char UNHANDLED[] = "[WARNING] An unhandled exception occurred";

/// A machine of its own for each test: the registry keys that the system uses start empty, and the
/// trace log goes to a file of the test's.
class CTestMachine : public testing::Test
{
protected:
    CTestMachine();
    ~CTestMachine() override;

    /// Writes the level mask of the system's own key.
    static void SetTraceMask(DWORD dwMask);
    static void SetString(const WCHAR* szKey, const WCHAR* szValue, const WCHAR* szText);
    static void SetDword(const WCHAR* szKey, const WCHAR* szValue, DWORD dwNumber);
    /// Writes a value of any type; szValue must not be empty.
    static void SetBytes(const WCHAR* szKey, const WCHAR* szValue, DWORD dwType, const void* pData,
                         DWORD cbData);
    static void DeleteValue(const WCHAR* szKey, const WCHAR* szValue);

    /// What a registry value holds, as "text", as a decimal number, or as "(none)".
    static std::string GetValue(const WCHAR* szKey, const WCHAR* szValue);

    /// The lines written so far under "LUM_GINA", without time, tag, source line and file:
    /// "[EXCEPTION] Unable to load DLL, Filename: x.dll, Error: 0x7e".
    Lines Log() const;
    /// The same for "MESSAGE_APP".
    Lines InternalLog() const;
    /// Every line as it is in the file of "LUM_GINA", line ends included.
    std::string RawLog() const;
    /// Forgets the lines written so far.
    void ClearLog();
    /// How many lines of the log are this one.
    int Count(const std::string& line) const;

private:
    std::string m_szLog;
    std::string m_szInternalLog;
};

inline constexpr WCHAR OWN_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
inline constexpr WCHAR DEBUG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");

/// Where tests have trace logs written, with a separator at its end. On Windows the user's own temporary
/// folder: each line opens the file anew, which is slow on a network file system, as the build folder may lie
/// on.
std::string GetLogFolder();

/// Every byte of a file; none when there is no such file.
std::string ReadBytes(const std::string& path);

/// Plain ASCII in and out.
std::string Narrow(const WCHAR* szText);
std::basic_string<WCHAR> Widen(const std::string& text);
