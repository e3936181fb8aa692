#include "machine/MachineRegistry.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using WideText = std::basic_string<WCHAR>;
using Bytes = std::vector<BYTE>;

constexpr char NARROW_FILE[] = "machine.reg";
constexpr WCHAR FILE_NAME[] = TEXT("machine.reg");
constexpr char HEADING[] = "Windows Registry Editor Version 5.00\r\n\r\n";
constexpr char KEY_LINE[] = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\r\n";
constexpr WCHAR KEY[] = TEXT("SOFTWARE\\Key");

struct CValue
{
    DWORD dwType;
    Bytes bytes;

    bool operator==(const CValue&) const = default;
};
const CValue NO_VALUE = {0xDEAD, {}};

void PrintTo(const CValue& value, std::ostream* pStream)
{
    *pStream << "type " << value.dwType << ' ' << testing::PrintToString(value.bytes);
}

CValue Text(const WideText& text)
{
    const auto* pBytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {REG_SZ, Bytes(pBytes, pBytes + 2 * (text.size() + 1))};
}

CValue GetValue(const WCHAR* szKey, const WCHAR* szValue)
{
    HKEY hKey = nullptr;
    CValue value = {0, Bytes(1024)};
    auto cbData = static_cast<DWORD>(value.bytes.size());
    LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey);
    if (lResult == ERROR_SUCCESS) {
        lResult = RegQueryValueExW(hKey, szValue, nullptr, &value.dwType, value.bytes.data(), &cbData);
        RegCloseKey(hKey);
    }
    value.bytes.resize(cbData);
    return lResult == ERROR_SUCCESS ? value : NO_VALUE;
}

void SetValue(const WCHAR* szKey, const WCHAR* szValue, const CValue& value, DWORD dwOptions = 0)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, dwOptions, KEY_ALL_ACCESS, nullptr,
                              &hKey, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(hKey, szValue, 0, value.dwType, value.bytes.data(),
                             static_cast<DWORD>(value.bytes.size())),
              ERROR_SUCCESS);
    RegCloseKey(hKey);
}

std::string ReadBack()
{
    std::ifstream file(NARROW_FILE, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

/// UTF-16 as the system's editor writes it.
std::string ToUtf16(const WideText& text)
{
    return "\xFF\xFE" + std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
}

class MachineRegistryFile : public testing::Test
{
protected:
    MachineRegistryFile() { MachineRegistry::Clear(); }
    ~MachineRegistryFile() override { std::remove(NARROW_FILE); }

    static LONG Load(const std::string& bytes, std::string* pReason = nullptr)
    {
        std::ofstream(NARROW_FILE, std::ios::binary) << bytes;
        return MachineRegistry::Load(FILE_NAME, pReason);
    }
};

TEST_F(MachineRegistryFile, ReadsEveryFormOfAValue)
{
    const struct
    {
        const char* szLine;
        const WCHAR* szName;
        CValue expected;
    } rows[] = {
        {"\"text\"=\"C:\\\\dir \\\"x\\\"\"", TEXT("text"), Text(TEXT("C:\\dir \"x\""))},
        {"@=\"default\"", nullptr, Text(TEXT("default"))},
        {"\"a \\\\ name\"=\"\"", TEXT("a \\ name"), Text(TEXT(""))},
        {"\"\xC3\xA9\"=\"\xE2\x82\xAC\xF0\x9F\x98\x80\"", TEXT("\u00E9"), Text(u"\u20AC\U0001F600")},
        {"\"number\" = DWORD:0000010f", TEXT("number"), {REG_DWORD, {0x0F, 1, 0, 0}}},
        {"\"short\"=dword:7", TEXT("short"), {REG_DWORD, {7, 0, 0, 0}}},
        {"\"bytes\"=hex:00,ff,A", TEXT("bytes"), {REG_BINARY, {0, 0xFF, 0x0A}}},
        {"\"none\"=hex:", TEXT("none"), {REG_BINARY, {}}},
        {"\"split\"=hex:01,\\\r\n  02,\\\r\n  03", TEXT("split"), {REG_BINARY, {1, 2, 3}}},
        {"\"odd text\"=hex(1):61", TEXT("odd text"), {REG_SZ, {0x61}}},
        {"\"type\"=hex(abc):01", TEXT("type"), {0xABC, {1}}},
        {"  ; remark\r\n\r\n\"after\"=dword:1  ", TEXT("after"), {REG_DWORD, {1, 0, 0, 0}}},
    };
    for (const auto& row : rows) {
        std::string reason;
        EXPECT_EQ(Load(std::string(HEADING) + KEY_LINE + row.szLine, &reason), ERROR_SUCCESS) << reason;
        EXPECT_EQ(GetValue(KEY, row.szName), row.expected) << row.szLine;
    }
}

TEST_F(MachineRegistryFile, ReadsEveryEncoding)
{
    const WideText wide = TEXT("Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n"
                               "\"v\"=\"\u00E9\"\n");
    const std::string body = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n\"v\"=\"";
    const struct
    {
        const char* szWhat;
        std::string bytes;
    } rows[] = {
        {"UTF-16", ToUtf16(wide)},
        {"UTF-8", HEADING + body + "\xC3\xA9\""},
        {"UTF-8 with mark", "\xEF\xBB\xBF" + (HEADING + body) + "\xC3\xA9\""},
        {"old format", "REGEDIT4\n\n" + body + "\xE9\""},
        {"old format, bytes of a text", "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Key]\n\"v\"=hex(1):e9,00"},
    };
    for (const auto& row : rows) {
        MachineRegistry::Clear();
        EXPECT_EQ(Load(row.bytes), ERROR_SUCCESS) << row.szWhat;
        EXPECT_EQ(GetValue(KEY, TEXT("v")), Text(TEXT("\u00E9"))) << row.szWhat;
    }
}

TEST_F(MachineRegistryFile, DeletesWhatItIsToldTo)
{
    SetValue(KEY, TEXT("keep"), Text(TEXT("1")));
    SetValue(KEY, TEXT("drop"), Text(TEXT("1")));
    SetValue(TEXT("SOFTWARE\\Other\\Below"), TEXT("v"), Text(TEXT("1")));
    EXPECT_EQ(Load(std::string(HEADING) + KEY_LINE +
                   "\"drop\"=-\n\"missing\"=-\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\n[-HKEY_LOCAL_"
                   "MACHINE\\No\\Such]"),
              ERROR_SUCCESS);
    EXPECT_EQ(GetValue(KEY, TEXT("keep")), Text(TEXT("1")));
    EXPECT_EQ(GetValue(KEY, TEXT("drop")), NO_VALUE);
    EXPECT_EQ(GetValue(TEXT("SOFTWARE\\Other\\Below"), TEXT("v")), NO_VALUE);
}

TEST_F(MachineRegistryFile, RefusesAMalformedFileAsAWhole)
{
    const struct
    {
        const char* szLine;
        const char* szReason;
    } rows[] = {
        {"nonsense", "line 5: neither a key nor a value"},
        {"\"v\"=\"open", "line 5: a text without its closing quote"},
        {"\"v\"=\"a\\n\"", "line 5: only \\\\ and \\\" may follow a backslash in a text"},
        {"\"v\"=\"a\" b", "line 5: something is left over at the end"},
        {"\"v\"", "line 5: an equals sign is missing behind the name"},
        {"\"v\"=word:1", "line 5: a value is neither a text nor dword: nor hex:"},
        {"\"v\"=dword:123456789", "line 5: a hexadecimal number is missing or too long"},
        {"\"v\"=dword:", "line 5: a hexadecimal number is missing or too long"},
        {"\"v\"=hex:1 2", "line 5: a comma is missing between bytes"},
        {"\"v\"=hex:1,\\\n\\\n100", "line 5: a hexadecimal number is missing or too long"},
        {"\"v\"=hex(1:1", "line 5: a parenthesis is missing behind the type"},
        {"\"v\"=hex(1)1", "line 5: a colon is missing before the bytes"},
        {"[HKEY_LOCAL_MACHINE\\Open", "line 5: a key without its closing bracket"},
        {"[HKEY_CURRENT_USER\\x]", "line 5: only keys of HKEY_LOCAL_MACHINE can be used"},
        {"[HKEY_LOCAL_MACHINES]", "line 5: only keys of HKEY_LOCAL_MACHINE can be used"},
        {"[-HKEY_LOCAL_MACHINE]", "line 5: HKEY_LOCAL_MACHINE itself cannot be deleted"},
        {"[-HKEY_LOCAL_MACHINE\\x]\n\"v\"=\"1\"", "line 6: a value outside a key"},
    };
    SetValue(KEY, TEXT("v"), Text(TEXT("old")));
    for (const auto& row : rows) {
        std::string reason;
        EXPECT_EQ(Load(std::string(HEADING) + KEY_LINE + "\"v\"=\"new\"\n" + row.szLine, &reason),
                  ERROR_BADDB)
            << row.szLine;
        EXPECT_EQ(reason, row.szReason);
        EXPECT_EQ(GetValue(KEY, TEXT("v")), Text(TEXT("old"))) << row.szLine;
    }
}

TEST_F(MachineRegistryFile, RefusesWhatIsNoRegistryFile)
{
    const struct
    {
        std::string bytes;
        const char* szReason;
    } rows[] = {
        {"", "line 1: the heading of a registry file is missing"},
        {"REGEDIT5\n", "line 1: the heading of a registry file is missing"},
        {"\xFF\xFEx", "the file is UTF-16 and ends within a character"},
        {"Windows Registry Editor Version 5.00\n; \xE9", "the file is neither UTF-16 nor UTF-8"},
    };
    for (const auto& row : rows) {
        std::string reason;
        EXPECT_EQ(Load(row.bytes, &reason), ERROR_BADDB);
        EXPECT_EQ(reason, row.szReason);
    }
    EXPECT_EQ(MachineRegistry::Load(TEXT("no_such.reg")), ERROR_FILE_NOT_FOUND);
}

TEST_F(MachineRegistryFile, ReadsBackWhatItWrote)
{
    const CValue values[] = {
        Text(TEXT("plain")), Text(TEXT("two\nlines")),  {REG_SZ, {0x61, 0}}, {REG_SZ, {}},
        {REG_SZ, {0x61}},    {REG_SZ, {0, 0xD8, 0, 0}}, {REG_DWORD, {1, 2}}, {REG_BINARY, Bytes(100, 0xA5)},
        {REG_NONE, {1}},     {0xFFFFFFFF, {1, 2, 3}},
    };
    WideText name = TEXT("a \\ \" ] ; = name ");
    for (const CValue& value : values) {
        SetValue(TEXT("A ] key"), (name += '+').c_str(), value);
    }
    ASSERT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_SUCCESS);
    const std::string saved = ReadBack();
    MachineRegistry::Clear();
    std::string reason;
    ASSERT_EQ(MachineRegistry::Load(FILE_NAME, &reason), ERROR_SUCCESS) << reason;
    name = TEXT("a \\ \" ] ; = name ");
    for (const CValue& value : values) {
        EXPECT_EQ(GetValue(TEXT("A ] key"), (name += '+').c_str()), value);
    }
    MachineRegistry::Save(FILE_NAME);
    EXPECT_EQ(ReadBack(), saved);
}

TEST_F(MachineRegistryFile, KeepsTheOldFileWhenItCannotWriteANewOne)
{
    ASSERT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_SUCCESS);
    const std::string saved = ReadBack();
    SetValue(KEY, TEXT("two\nlines"), Text(TEXT("1")));
    EXPECT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_INVALID_NAME);
    EXPECT_EQ(ReadBack(), saved);
    MachineRegistry::Clear();
    EXPECT_EQ(MachineRegistry::Save(TEXT("no\\such\\machine.reg")), ERROR_FILE_NOT_FOUND);
}

} // namespace
