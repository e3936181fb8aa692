#include "TestMachine.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "SafeStartNames.h"

namespace {

// Bottom up, since a key with subkeys cannot be deleted.
const WCHAR* const USED_KEYS[] = {
    VOLATILE_KEY,
    LEFT_OUT_KEY,
    START_KEY,
    TEXT("SOFTWARE\\ORX\\LUM\\Gina"),
    TEXT("SOFTWARE\\ORX\\LUM"),
    TEXT("Software\\ORX\\Security\\Debug"),
    TEXT("Software\\ORX\\Security"),
    TEXT("SOFTWARE\\ORX\\Test\\Volatile"),
    TEXT("SOFTWARE\\ORX\\Test"),
    TEXT("SOFTWARE\\ORX"),
};

void DeleteUsedKeys()
{
    for (const WCHAR* szKey : USED_KEYS) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
    }
}

std::vector<std::string> ReadLines(const std::string& path)
{
    // Time and tag in front, place of the statement behind.
    static const std::regex pattern("^.{24} \\w+: (\\[.*\\] .*?)(,? \\( \\d+ \\) \\w+\\.\\w+)?$");
    std::vector<std::string> lines;
    std::istringstream text(ReadBytes(path));
    for (std::string line; std::getline(text, line);) {
        line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
        std::smatch match;
        lines.push_back(std::regex_match(line, match, pattern) ? match[1].str() : "malformed: " + line);
    }
    return lines;
}

} // namespace

std::string ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
}

std::string GetLogFolder()
{
    const char* szTemp = std::getenv("TEMP");
    return szTemp != nullptr ? std::string(szTemp) + "\\" : std::string();
}

CTestMachine::CTestMachine()
{
    const testing::TestInfo* pTest = testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = std::string(pTest->test_suite_name()) + "." + pTest->name();
    m_szLog = GetLogFolder() + name + ".log";
    m_szInternalLog = GetLogFolder() + name + ".internal.log";
    DeleteUsedKeys();
    ClearLog();
    SetString(DEBUG_KEY, TEXT("LUM_GINA"), Widen(m_szLog).c_str());
    SetString(DEBUG_KEY, TEXT("MESSAGE_APP"), Widen(m_szInternalLog).c_str());
}

CTestMachine::~CTestMachine()
{
    DeleteUsedKeys();
    if (!HasFailure()) {
        ClearLog();
    }
}

void CTestMachine::SetTraceMask(DWORD dwMask)
{
    SetDword(OWN_KEY, TEXT("Debug"), dwMask);
}

void CTestMachine::SetString(const WCHAR* szKey, const WCHAR* szValue, const WCHAR* szText)
{
    const std::size_t cchText = std::char_traits<WCHAR>::length(szText) + 1;
    SetBytes(szKey, szValue, REG_SZ, szText, static_cast<DWORD>(cchText * sizeof(WCHAR)));
}

void CTestMachine::SetDword(const WCHAR* szKey, const WCHAR* szValue, DWORD dwNumber)
{
    SetBytes(szKey, szValue, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

void CTestMachine::SetBytes(const WCHAR* szKey, const WCHAR* szValue, DWORD dwType, const void* pData,
                            DWORD cbData)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                             nullptr, &hKey, nullptr));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetValueExW(hKey, szValue, 0, dwType, static_cast<const BYTE*>(pData), cbData));
    RegCloseKey(hKey);
}

void CTestMachine::DeleteValue(const WCHAR* szKey, const WCHAR* szValue)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_WRITE, &hKey) == ERROR_SUCCESS) {
        RegDeleteValueW(hKey, szValue);
        RegCloseKey(hKey);
    }
}

std::string CTestMachine::GetValue(const WCHAR* szKey, const WCHAR* szValue)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey) != ERROR_SUCCESS) {
        return "(none)";
    }
    DWORD dwType = 0;
    BYTE data[2048] = {};
    DWORD cbData = sizeof(data) - sizeof(WCHAR);
    const LONG lResult = RegQueryValueExW(hKey, szValue, nullptr, &dwType, data, &cbData);
    RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS) {
        return "(none)";
    }
    if (dwType != REG_DWORD) {
        return '"' + Narrow(reinterpret_cast<const WCHAR*>(data)) + '"';
    }
    DWORD dwNumber = 0;
    std::memcpy(&dwNumber, data, sizeof(dwNumber));
    return std::to_string(dwNumber);
}

std::vector<std::string> CTestMachine::Log() const
{
    return ReadLines(m_szLog);
}

std::vector<std::string> CTestMachine::InternalLog() const
{
    return ReadLines(m_szInternalLog);
}

std::string CTestMachine::RawLog() const
{
    return ReadBytes(m_szLog);
}

/// A thread of the host may have them open for a moment.
void CTestMachine::ClearLog()
{
    for (const std::string& file : {m_szLog, m_szInternalLog}) {
        for (int nTry = 0; std::remove(file.c_str()) != 0 && errno == EACCES && nTry < 100; ++nTry) {
            Sleep(10);
        }
    }
}

int CTestMachine::Count(const std::string& line) const
{
    const std::vector<std::string> lines = Log();
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

std::string Narrow(const WCHAR* szText)
{
    std::string text;
    for (; *szText != 0; ++szText) {
        text += static_cast<char>(*szText);
    }
    return text;
}

std::basic_string<WCHAR> Widen(const std::string& text)
{
    return {text.begin(), text.end()};
}
