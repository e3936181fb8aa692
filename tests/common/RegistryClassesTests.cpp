#include <functional>

#include "Exceptions.h"
#include "RegistryClasses.h"
#include "TestMachine.h"

namespace {

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\Test");
constexpr WCHAR NAME[] = TEXT("Value");

constexpr const char* TOO_LONG = "[WARNING] String length to long";
constexpr const char* DEFAULT_CREATED =
    "[WARNING] Had to create registry value with default setting. Should be initialized, Value Name: Value";

class RegistryClasses : public CTestMachine
{
protected:
    static CRegistryString String(bool bCreate, bool bReadThrough, bool bReadNow)
    {
        return CRegistryString(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, NAME, KEY_ALL_ACCESS,
                               bCreate, true, bReadThrough, true, bReadNow, 0);
    }

    static CRegistryDword Dword(bool bCreate, bool bReadNow)
    {
        return CRegistryDword(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, NAME, KEY_ALL_ACCESS,
                              bCreate, true, true, true, bReadNow, 0);
    }

    static std::string Read(CRegistryString& value, DWORD cch = 260)
    {
        WCHAR szText[300] = {};
        EXPECT_TRUE(value.GetRegistryString(szText, cch, false));
        return Narrow(szText);
    }
};

TEST_F(RegistryClasses, KeysAreMadeWhenThatIsAllowed)
{
    const auto make = [](bool bCreate, DWORD dwOptions) {
        CRegistryKey key(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, KEY_ALL_ACCESS, bCreate, true,
                         dwOptions);
        EXPECT_TRUE(key.CloseKey());
        EXPECT_TRUE(key.CloseKey());
        EXPECT_TRUE(key.OpenKey());
        EXPECT_TRUE(key.OpenKey());
    };
    EXPECT_THROW(make(false, 0), CUnableToOpenRegistryKeyException);
    EXPECT_EQ(
        1, Count("[EXCEPTION] Unable to open registry key, Registry Key: SOFTWARE\\ORX\\Test, Error: 0x2"));
    make(true, REG_OPTION_NON_VOLATILE);
    EXPECT_EQ(1, Count("[WARNING] Unable to close the registry key because it is already closed"));
    make(false, 0);
    EXPECT_THROW(CRegistryKey(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, nullptr, 0, false, false, 0),
                 CBadArgException);
    EXPECT_EQ(1, Count("[EXCEPTION] A bad argument was provided, Argument: szSubKey"));
}

TEST_F(RegistryClasses, MissingValuesGetTheirDefault)
{
    EXPECT_THROW(String(false, true, true), CUnableToOpenRegistryKeyException);
    {
        CRegistryString text = String(true, true, true);
        EXPECT_EQ("", Read(text));
    }
    EXPECT_EQ("\"\"", GetValue(KEY, NAME));
    EXPECT_EQ(1, Count(DEFAULT_CREATED));
    CRegistryString text = String(true, true, false);
    EXPECT_TRUE(text.DeleteRegistryValue());
    EXPECT_THROW(text.DeleteRegistryValue(), CUnableToDeleteRegistryValueException);
    EXPECT_THROW(String(false, true, true), CUnableToReadRegistryException);
    EXPECT_EQ(1, Count("[EXCEPTION] Unable to read from registry, Registry Value: Value, Error: 0x2"));
    EXPECT_THROW(Dword(false, true), CUnableToReadRegistryException);
    CRegistryDword number = Dword(true, true);
    EXPECT_EQ("0", GetValue(KEY, NAME));
    EXPECT_TRUE(number.SetRegistryDword(77, false));
    EXPECT_EQ("77", GetValue(KEY, NAME));
}

TEST_F(RegistryClasses, BadArguments)
{
    for (const WCHAR* szName : {static_cast<const WCHAR*>(nullptr), TEXT("")}) {
        EXPECT_THROW(CRegistryString(LUM_GINA_APP, LUM_GINA_MTM, HKEY_LOCAL_MACHINE, KEY, szName, 0, false,
                                     false, false, false, false, 0),
                     CBadArgException);
    }
    CRegistryString text = String(true, true, true);
    WCHAR szBuffer[2];
    EXPECT_THROW(text.GetRegistryString(nullptr, 5, true), CBadArgException);
    EXPECT_THROW(text.GetRegistryString(szBuffer, 0, true), CBadArgException);
    EXPECT_THROW(text.SetRegistryString(nullptr, true), CBadArgException);
    EXPECT_THROW(text.SetRegistryString(reinterpret_cast<WCHAR*>(0x10), true), CWcscpyException);
    EXPECT_THROW(Dword(true, false).GetRegistryDword(nullptr, true), CBadArgException);
}

TEST_F(RegistryClasses, TextsAreCutToTheirBounds)
{
    CRegistryString text = String(true, true, true);
    ClearLog();
    EXPECT_TRUE(text.SetRegistryString(std::basic_string<WCHAR>(300, 'x').c_str(), false));
    EXPECT_EQ('"' + std::string(259, 'x') + '"', GetValue(KEY, NAME));
    EXPECT_EQ(1, Count(TOO_LONG));
    EXPECT_EQ(std::string(259, 'x'), Read(text));
    EXPECT_EQ(1, Count(TOO_LONG));
    EXPECT_EQ("xxxxxxxxx", Read(text, 10));
    EXPECT_EQ("", Read(text, 1));
    EXPECT_EQ(3, Count(TOO_LONG));
}

TEST_F(RegistryClasses, ReadsWhatIsThereAndNoMore)
{
    const std::basic_string<WCHAR> longText(300, 'y');
    const auto bytes = [&](DWORD dwType, const void* pData, DWORD cbData) {
        SetBytes(KEY, NAME, dwType, pData, cbData);
    };
    CRegistryString text = String(true, true, true);
    CRegistryDword number = Dword(true, false);
    struct
    {
        std::function<void()> write;
        const char* szText;
        DWORD dwNumber;
    } const rows[] = {
        // What follows is no terminator, which Windows would add.
        {[&] { bytes(REG_SZ, TEXT("abX"), 4); }, "ab", 0x00620061},
        {[&] { bytes(REG_BINARY, "a\0b", 3); }, "a", 0x00620061},
        {[&] { bytes(REG_BINARY, "a", 1); }, "", 0x61},
        {[&] { bytes(REG_MULTI_SZ, "", 0); }, "", 0},
    };
    for (const auto& row : rows) {
        row.write();
        EXPECT_EQ(row.szText, Read(text));
        DWORD dwNumber = 1;
        EXPECT_TRUE(number.GetRegistryDword(&dwNumber, false));
        EXPECT_EQ(row.dwNumber, dwNumber);
    }
    WCHAR szBuffer[260];
    bytes(REG_SZ, longText.data(), 522);
    EXPECT_THROW(text.GetRegistryString(szBuffer, 260, false), CUnableToReadRegistryException);
    bytes(REG_SZ, longText.data(), 520);
    EXPECT_EQ(std::string(259, 'y'), Read(text));
    DWORD dwNumber = 0;
    EXPECT_THROW(number.GetRegistryDword(&dwNumber, false), CUnableToReadRegistryException);
}

TEST_F(RegistryClasses, CacheAnswersWithoutReadThrough)
{
    SetString(KEY, NAME, TEXT("registry"));
    CRegistryString text = String(true, false, false);
    EXPECT_EQ("", Read(text));
    EXPECT_TRUE(text.ReadRegistry());
    EXPECT_EQ("registry", Read(text));
    SetString(KEY, NAME, TEXT("changed"));
    EXPECT_EQ("registry", Read(text));
    EXPECT_TRUE(text.WriteRegistry());
    EXPECT_EQ("\"registry\"", GetValue(KEY, NAME));
}

} // namespace
