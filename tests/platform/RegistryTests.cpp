#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "TestKey.h"

namespace {

using WideText = std::basic_string<WCHAR>;
using Bytes = std::vector<BYTE>;

constexpr WCHAR ROOT[] = TEXT("SOFTWARE\\ORX\\RegistryTest");
constexpr BYTE FILLER = 0xEE;

struct CStep
{
    const char* szWhat;
    std::function<LONG()> run;
    LONG lExpected;
};

void RunSteps(const std::vector<CStep>& steps)
{
    for (const CStep& step : steps) {
        EXPECT_EQ(step.run(), step.lExpected) << step.szWhat;
    }
}

LONG Create(HKEY hParent, const WCHAR* szKey, DWORD dwOptions, HKEY* phKey, DWORD* pdwDisposition = nullptr)
{
    return RegCreateKeyExW(hParent, szKey, 0, nullptr, dwOptions, KEY_ALL_ACCESS, nullptr, phKey,
                           pdwDisposition);
}

LONG Create(HKEY hParent, const WCHAR* szKey, DWORD dwOptions = REG_OPTION_NON_VOLATILE)
{
    HKEY hKey = nullptr;
    const LONG lResult = Create(hParent, szKey, dwOptions, &hKey);
    RegCloseKey(hKey);
    return lResult;
}

LONG Open(HKEY hParent, const WCHAR* szKey, REGSAM samDesired = KEY_READ)
{
    HKEY hKey = nullptr;
    const LONG lResult = RegOpenKeyExW(hParent, szKey, 0, samDesired, &hKey);
    RegCloseKey(hKey);
    return lResult;
}

LONG Set(HKEY hKey, const WCHAR* szValue, DWORD dwType, const void* pData, std::size_t cbData)
{
    return RegSetValueExW(hKey, szValue, 0, dwType, static_cast<const BYTE*>(pData),
                          static_cast<DWORD>(cbData));
}

LONG Set(HKEY hKey, const WCHAR* szValue, DWORD dwNumber)
{
    return Set(hKey, szValue, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

LONG Exists(HKEY hKey, const WCHAR* szValue)
{
    return RegQueryValueExW(hKey, szValue, nullptr, nullptr, nullptr, nullptr);
}

class Registry : public testing::Test
{
protected:
    Registry() : m_key(ROOT) { EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, ROOT, 0, &m_hRoot), ERROR_SUCCESS); }
    ~Registry() override { RegCloseKey(m_hRoot); }

    HKEY OpenRoot(REGSAM samDesired) const
    {
        HKEY hKey = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, ROOT, 0, samDesired, &hKey), ERROR_SUCCESS);
        return hKey;
    }

    CTestKey m_key;
    HKEY m_hRoot = nullptr;
};

TEST_F(Registry, FindsKeysByPathWithoutRegardToCase)
{
    RunSteps({
        {"make two levels", [&] { return Create(m_hRoot, TEXT("One\\Two")); }, ERROR_SUCCESS},
        {"open", [&] { return Open(m_hRoot, TEXT("One\\Two")); }, ERROR_SUCCESS},
        {"open in another case", [&] { return Open(m_hRoot, TEXT("oNE\\tWO")); }, ERROR_SUCCESS},
        {"open what is missing", [&] { return Open(m_hRoot, TEXT("One\\Three")); }, ERROR_FILE_NOT_FOUND},
        {"open below what is missing", [&] { return Open(m_hRoot, TEXT("No\\Two")); }, ERROR_FILE_NOT_FOUND},
        {"open the key itself", [&] { return Open(m_hRoot, TEXT("")); }, ERROR_SUCCESS},
        {"open the key itself by null", [&] { return Open(m_hRoot, nullptr); }, ERROR_SUCCESS},
        {"create the key itself", [&] { return Create(m_hRoot, TEXT("")); }, ERROR_SUCCESS},
        {"create the key itself by null", [&] { return Create(m_hRoot, nullptr); }, ERROR_SUCCESS},
        {"doubled separators", [&] { return Open(m_hRoot, TEXT("One\\\\Two")); }, ERROR_SUCCESS},
        {"a trailing separator", [&] { return Open(m_hRoot, TEXT("One\\")); }, ERROR_SUCCESS},
        {"a leading separator", [&] { return Open(m_hRoot, TEXT("\\One")); }, ERROR_BAD_PATHNAME},
        {"a name of 255 characters", [&] { return Create(m_hRoot, WideText(255, 'n').c_str()); },
         ERROR_SUCCESS},
        {"no handle", [&] { return Open(nullptr, TEXT("One")); }, ERROR_INVALID_HANDLE},
        {"no result", [&] { return RegOpenKeyExW(m_hRoot, TEXT("One"), 0, KEY_READ, nullptr); },
         ERROR_INVALID_PARAMETER},
        {"a machine without that key", [] { return Open(HKEY_LOCAL_MACHINE, TEXT("No\\Such")); },
         ERROR_FILE_NOT_FOUND},
    });
}

TEST_F(Registry, TellsNewKeysFromExistingOnes)
{
    HKEY hKey = nullptr;
    DWORD dwDisposition = 0;
    EXPECT_EQ(Create(m_hRoot, TEXT("Key"), 0, &hKey, &dwDisposition), ERROR_SUCCESS);
    EXPECT_EQ(dwDisposition, DWORD(REG_CREATED_NEW_KEY));
    RegCloseKey(hKey);
    EXPECT_EQ(Create(m_hRoot, TEXT("KEY"), REG_OPTION_VOLATILE, &hKey, &dwDisposition), ERROR_SUCCESS);
    EXPECT_EQ(dwDisposition, DWORD(REG_OPENED_EXISTING_KEY));
    EXPECT_EQ(Create(hKey, TEXT("Child")), ERROR_SUCCESS) << "an existing key does not become volatile";
    RegCloseKey(hKey);
}

TEST_F(Registry, KeepsLastingKeysOutOfVolatileOnes)
{
    RunSteps({
        {"make a volatile key", [&] { return Create(m_hRoot, TEXT("V"), REG_OPTION_VOLATILE); },
         ERROR_SUCCESS},
        {"a lasting one below", [&] { return Create(m_hRoot, TEXT("V\\L")); }, ERROR_CHILD_MUST_BE_VOLATILE},
        {"which was not made", [&] { return Open(m_hRoot, TEXT("V\\L")); }, ERROR_FILE_NOT_FOUND},
        {"a volatile one below", [&] { return Create(m_hRoot, TEXT("V\\V"), REG_OPTION_VOLATILE); },
         ERROR_SUCCESS},
        {"open a volatile one as lasting", [&] { return Create(m_hRoot, TEXT("V\\V")); }, ERROR_SUCCESS},
    });
}

TEST_F(Registry, KeepsValuesOfAnyTypeAsTheyWereGiven)
{
    const struct
    {
        const WCHAR* szName;
        DWORD dwType;
        Bytes data;
    } rows[] = {
        {TEXT("text"), REG_SZ, {'a', 0, 0, 0}},
        {TEXT("empty text"), REG_SZ, {0, 0}},
        {TEXT("text within a text"), REG_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0}},
        {TEXT("number"), REG_DWORD, {1, 2, 3, 4}},
        {TEXT("short number"), REG_DWORD, {1}},
        {TEXT("bytes"), REG_BINARY, {1, 0, 0xFF}},
        {TEXT("nothing"), REG_NONE, {}},
        {TEXT("list"), REG_MULTI_SZ, {'a', 0, 0, 0, 0, 0}},
        {TEXT("unknown type"), 0x4711, {5, 6}},
        {nullptr, REG_SZ, {'d', 0, 0, 0}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Set(m_hRoot, row.szName, row.dwType, row.data.data(), row.data.size()), ERROR_SUCCESS);
    }
    for (const auto& row : rows) {
        SCOPED_TRACE(row.dwType);
        DWORD dwType = 99;
        BYTE data[16];
        DWORD cbData = sizeof(data);
        EXPECT_EQ(RegQueryValueExW(m_hRoot, row.szName, nullptr, &dwType, data, &cbData), ERROR_SUCCESS);
        EXPECT_EQ(dwType, row.dwType);
        EXPECT_EQ(Bytes(data, data + cbData), row.data);
    }
    DWORD cbData = 0;
    EXPECT_EQ(RegQueryValueExW(m_hRoot, TEXT(""), nullptr, nullptr, nullptr, &cbData), ERROR_SUCCESS)
        << "the empty name is the default value's";
    EXPECT_EQ(cbData, 4u);
}

TEST_F(Registry, AnswersToTheSizeOfTheBuffer)
{
    ASSERT_EQ(Set(m_hRoot, TEXT("v"), REG_BINARY, "12345", 5), ERROR_SUCCESS);
    const struct
    {
        const char* szWhat;
        bool bBuffer;
        DWORD cbBuffer;
        LONG lExpected;
    } rows[] = {
        {"asks for the size", false, 0, ERROR_SUCCESS},
        {"asks for the size, whatever that says", false, 2, ERROR_SUCCESS},
        {"too small", true, 4, ERROR_MORE_DATA},
        {"just right", true, 5, ERROR_SUCCESS},
        {"larger", true, 8, ERROR_SUCCESS},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szWhat);
        BYTE buffer[8] = {};
        DWORD dwType = 99;
        DWORD cbBuffer = row.cbBuffer;
        EXPECT_EQ(
            RegQueryValueExW(m_hRoot, TEXT("v"), nullptr, &dwType, row.bBuffer ? buffer : nullptr, &cbBuffer),
            row.lExpected);
        EXPECT_EQ(cbBuffer, 5u);
        EXPECT_EQ(dwType, DWORD(REG_BINARY));
        EXPECT_EQ(std::memcmp(buffer, "12345", 5) == 0, row.bBuffer && row.lExpected == ERROR_SUCCESS);
    }
    BYTE buffer[8] = {};
    EXPECT_EQ(RegQueryValueExW(m_hRoot, TEXT("v"), nullptr, nullptr, buffer, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(m_hRoot, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
}

TEST_F(Registry, TerminatesTextsThatAreStoredWithoutEndIfThereIsRoom)
{
    // A letter behind the text: Windows would store a terminator that it finds there.
    const WCHAR szText[] = TEXT("abx");
    ASSERT_EQ(Set(m_hRoot, TEXT("sz"), REG_SZ, szText, 4), ERROR_SUCCESS);
    ASSERT_EQ(Set(m_hRoot, TEXT("bin"), REG_BINARY, szText, 4), ERROR_SUCCESS);
    ASSERT_EQ(Set(m_hRoot, TEXT("ended"), REG_SZ, TEXT("a"), 4), ERROR_SUCCESS);
    const struct
    {
        const WCHAR* szName;
        DWORD cbBuffer;
        bool bTerminated;
    } rows[] = {{TEXT("sz"), 6, true},
                {TEXT("sz"), 5, false},
                {TEXT("sz"), 4, false},
                {TEXT("bin"), 6, false},
                {TEXT("ended"), 6, false}};
    for (const auto& row : rows) {
        BYTE buffer[8];
        std::memset(buffer, FILLER, sizeof(buffer));
        DWORD cbBuffer = row.cbBuffer;
        EXPECT_EQ(RegQueryValueExW(m_hRoot, row.szName, nullptr, nullptr, buffer, &cbBuffer), ERROR_SUCCESS);
        EXPECT_EQ(cbBuffer, 4u);
        EXPECT_EQ(buffer[4] == 0 && buffer[5] == 0, row.bTerminated) << row.cbBuffer;
        EXPECT_EQ(buffer[6], FILLER);
    }
}

TEST_F(Registry, FindsValuesWithoutRegardToCaseAndDeletesThem)
{
    DWORD cbData = 7;
    DWORD dwType = 8;
    RunSteps({
        {"set", [&] { return Set(m_hRoot, TEXT("Value"), 1); }, ERROR_SUCCESS},
        {"find", [&] { return Exists(m_hRoot, TEXT("vALUE")); }, ERROR_SUCCESS},
        {"a missing value",
         [&] { return RegQueryValueExW(m_hRoot, TEXT("No"), nullptr, &dwType, nullptr, &cbData); },
         ERROR_FILE_NOT_FOUND},
        {"no default value", [&] { return Exists(m_hRoot, nullptr); }, ERROR_FILE_NOT_FOUND},
        {"delete", [&] { return RegDeleteValueW(m_hRoot, TEXT("VALUE")); }, ERROR_SUCCESS},
        {"gone", [&] { return Exists(m_hRoot, TEXT("Value")); }, ERROR_FILE_NOT_FOUND},
        {"delete again", [&] { return RegDeleteValueW(m_hRoot, TEXT("Value")); }, ERROR_FILE_NOT_FOUND},
        {"data without an address", [&] { return Set(m_hRoot, TEXT("Value"), REG_BINARY, nullptr, 4); },
         ERROR_NOACCESS},
    });
}

TEST_F(Registry, HoldsAHandleToItsAccess)
{
    ASSERT_EQ(Set(m_hRoot, TEXT("v"), 1), ERROR_SUCCESS);
    const HKEY hRead = OpenRoot(KEY_READ);
    const HKEY hWrite = OpenRoot(KEY_SET_VALUE);
    const HKEY hAny = OpenRoot(MAXIMUM_ALLOWED);
    WCHAR szName[8];
    DWORD cchName = 8;
    RunSteps({
        {"read for reading", [&] { return Exists(hRead, TEXT("v")); }, ERROR_SUCCESS},
        {"write for reading", [&] { return Set(hRead, TEXT("v"), 2); }, ERROR_ACCESS_DENIED},
        {"delete for reading", [&] { return RegDeleteValueW(hRead, TEXT("v")); }, ERROR_ACCESS_DENIED},
        {"read for writing", [&] { return Exists(hWrite, TEXT("v")); }, ERROR_ACCESS_DENIED},
        {"write for writing", [&] { return Set(hWrite, TEXT("v"), 3); }, ERROR_SUCCESS},
        {"enumerate for writing",
         [&] { return RegEnumKeyExW(hWrite, 0, szName, &cchName, nullptr, nullptr, nullptr, nullptr); },
         ERROR_ACCESS_DENIED},
        {"write with all access", [&] { return Set(hAny, TEXT("v"), 4); }, ERROR_SUCCESS},
    });
    for (const HKEY hKey : {hRead, hWrite, hAny}) {
        EXPECT_EQ(RegCloseKey(hKey), ERROR_SUCCESS);
    }
}

TEST_F(Registry, KnowsClosedHandles)
{
    const HKEY hKey = OpenRoot(KEY_ALL_ACCESS);
    ASSERT_EQ(RegCloseKey(hKey), ERROR_SUCCESS);
    RunSteps({
        {"close again", [&] { return RegCloseKey(hKey); }, ERROR_INVALID_HANDLE},
        {"close nothing", [] { return RegCloseKey(nullptr); }, ERROR_INVALID_HANDLE},
        {"close the machine", [] { return RegCloseKey(HKEY_LOCAL_MACHINE); }, ERROR_SUCCESS},
        {"read", [&] { return Exists(hKey, TEXT("v")); }, ERROR_INVALID_HANDLE},
        {"write", [&] { return Set(hKey, TEXT("v"), 1); }, ERROR_INVALID_HANDLE},
        {"delete", [&] { return RegDeleteValueW(hKey, TEXT("v")); }, ERROR_INVALID_HANDLE},
        {"open below", [&] { return Open(hKey, TEXT("k")); }, ERROR_INVALID_HANDLE},
        {"create below", [&] { return Create(hKey, TEXT("k")); }, ERROR_INVALID_HANDLE},
    });
}

TEST_F(Registry, DeletesKeysWithoutChildren)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(Create(m_hRoot, TEXT("Key\\Child"), 0, &hKey), ERROR_SUCCESS);
    RunSteps({
        {"with a child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("Key")); }, ERROR_ACCESS_DENIED},
        {"the child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("key\\CHILD")); }, ERROR_SUCCESS},
        {"write to what is deleted", [&] { return Set(hKey, TEXT("v"), 1); }, ERROR_KEY_DELETED},
        {"open below what is deleted", [&] { return Open(hKey, TEXT("k")); }, ERROR_KEY_DELETED},
        {"close what is deleted", [&] { return RegCloseKey(hKey); }, ERROR_SUCCESS},
        {"again", [&] { return RegDeleteKeyW(m_hRoot, TEXT("Key\\Child")); }, ERROR_FILE_NOT_FOUND},
        {"no name", [&] { return RegDeleteKeyW(m_hRoot, nullptr); }, ERROR_INVALID_PARAMETER},
        {"the rest", [&] { return RegDeleteKeyW(m_hRoot, TEXT("Key")); }, ERROR_SUCCESS},
    });
}

TEST_F(Registry, ListsTheKeysBelowAKeyInTheOrderOfTheirNames)
{
    for (const WCHAR* szKey : {TEXT("beta"), TEXT("Alpha"), TEXT("Gamma")}) {
        ASSERT_EQ(Create(m_hRoot, szKey), ERROR_SUCCESS);
    }
    const struct
    {
        DWORD dwIndex;
        DWORD cchName;
        LONG lExpected;
        const WCHAR* szExpected;
    } rows[] = {
        {0, 6, ERROR_SUCCESS, TEXT("Alpha")},  {1, 16, ERROR_SUCCESS, TEXT("beta")},
        {2, 16, ERROR_SUCCESS, TEXT("Gamma")}, {0, 5, ERROR_MORE_DATA, nullptr},
        {3, 16, ERROR_NO_MORE_ITEMS, nullptr},
    };
    for (const auto& row : rows) {
        WCHAR szName[16] = {};
        DWORD cchName = row.cchName;
        EXPECT_EQ(RegEnumKeyExW(m_hRoot, row.dwIndex, szName, &cchName, nullptr, nullptr, nullptr, nullptr),
                  row.lExpected);
        if (row.szExpected != nullptr) {
            EXPECT_EQ(WideText(szName), row.szExpected);
            EXPECT_EQ(cchName, WideText(row.szExpected).size());
        }
    }
}

} // namespace
