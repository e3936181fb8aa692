// A machine's registry as a file. What a file says is seen in what is written of it.

#include "machine/MachineRegistry.h"

#include <cstdio>
#include <fstream>

#include "TestMachine.h"
#include "platform/Text.h"

namespace {

constexpr char NARROW_FILE[] = "machine.reg";
constexpr WCHAR FILE_NAME[] = TEXT("machine.reg");
const std::string HEADING = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string KEY_LINE = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A ] key]\r\n";
constexpr WCHAR KEY[] = TEXT("SOFTWARE\\A ] key");

/// UTF-16 as the system's editor writes it.
std::string ToUtf16(const std::basic_string<WCHAR>& text)
{
    return "\xFF\xFE" + std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
}

class MachineRegistryFile : public CTestMachine
{
protected:
    MachineRegistryFile() { MachineRegistry::Clear(); }
    ~MachineRegistryFile() override { std::remove(NARROW_FILE); }

    static LONG Load(const std::string& bytes, std::string* pReason = nullptr)
    {
        std::ofstream(NARROW_FILE, std::ios::binary) << bytes;
        return MachineRegistry::Load(FILE_NAME, pReason);
    }
    /// What is written below the key, in UTF-8.
    static std::string Saved()
    {
        EXPECT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_SUCCESS);
        const std::string bytes = ReadBytes(NARROW_FILE);
        const std::string text =
            Native::ToUtf8({reinterpret_cast<const WCHAR*>(bytes.data()) + 1, bytes.size() / 2 - 1});
        return text.substr(std::min(text.find(KEY_LINE), text.size() - KEY_LINE.size()) + KEY_LINE.size());
    }
};

TEST_F(MachineRegistryFile, ReadsEveryFormOfAValueAndWritesOne)
{
    const struct
    {
        const char* szLine;
        const char* szWritten = nullptr; ///< null for the same
    } rows[] = {
        {"\"text\"=\"C:\\\\dir \\\"x\\\"\""},
        {"@=\"default\""},
        {"\"a \\\\ \\\" ] ; = name \"=\"\""},
        {"\"\xC3\xA9\"=\"\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {"\"number\" = DWORD:0000010f", "\"number\"=dword:0000010f"},
        {"\"short\"=dword:7", "\"short\"=dword:00000007"},
        {"\"bytes\"=hex:00,ff,A", "\"bytes\"=hex:00,ff,0a"},
        {"\"none\"=hex:"},
        {"\"split\"=hex:01,\\\r\n  02,\\\r\n  03", "\"split\"=hex:01,02,03"},
        {"\"text\"=hex(1):61,00,00,00", "\"text\"=\"a\""},
        {"\"long\"=hex:01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,\\\r\n  "
         "02"},
        {"\"odd text\"=hex(1):61"},
        {"\"no end\"=hex(1):61,00"},
        {"\"empty\"=hex(1):"},
        {"\"two lines\"=hex(1):0a,00,00,00"},
        {"\"lines\"=\"\r\n [b]\"", "\"lines\"=hex(1):0d,00,0a,00,20,00,5b,00,62,00,5d,00,00,00"},
        {"\"odd number\"=hex(4):01,02"},
        {"\"type\"=hex(abc):01", "\"type\"=hex(00000abc):01"},
        {"\"highest\"=hex(ffffffff):01"},
        {"  ; remark\r\n\r\n\"after\"=dword:00000001  ", "\"after\"=dword:00000001"},
    };
    for (const auto& row : rows) {
        const std::string written = row.szWritten != nullptr ? row.szWritten : row.szLine;
        for (const std::string& line : {std::string(row.szLine), written}) {
            MachineRegistry::Clear();
            std::string reason;
            EXPECT_EQ(Load(HEADING + KEY_LINE + line, &reason), ERROR_SUCCESS) << reason;
            EXPECT_EQ(Saved(), written + "\r\n") << line;
        }
    }
    SetBytes(KEY, TEXT("half a character"), REG_SZ, TEXT("\xD800"), 4);
    Saved();
    MachineRegistry::Clear();
    EXPECT_EQ(MachineRegistry::Load(FILE_NAME), ERROR_SUCCESS);
    EXPECT_EQ(GetValue(KEY, TEXT("half a character")), std::string("\"\0\"", 3));
    EXPECT_EQ(Load(HEADING + KEY_LINE + "\"v\"=hex(1):61,00\n\"n\"=dword:102"), ERROR_SUCCESS);
    EXPECT_EQ(GetValue(KEY, TEXT("v")) + GetValue(KEY, TEXT("n")), "\"a\"258");
    // Of other roots nobody knows more than that they must not get lost.
    const std::string other = "[HKEY_USERS\\.DEFAULT\\x]\r\n\"u\"=dword:00000001\r\n";
    EXPECT_EQ(Load(HEADING + KEY_LINE + "\r\n" + other), ERROR_SUCCESS);
    EXPECT_NE(Saved().find(other), std::string::npos);
}

TEST_F(MachineRegistryFile, ReadsEveryEncoding)
{
    const std::string body = KEY_LINE + "\"v\"=\"";
    for (const std::string& bytes : {
             ToUtf16(Widen(HEADING + body) + TEXT("\u00E9\u20AC\"")),
             HEADING + body + "\xC3\xA9\xE2\x82\xAC\"",
             "\xEF\xBB\xBF" + HEADING + body + "\xC3\xA9\xE2\x82\xAC\"",
             "REGEDIT4\n\n" + body + "\xE9\x80\"",
             "REGEDIT4\n" + KEY_LINE + "\"v\"=hex(1):e9,80,00",
         })
    {
        MachineRegistry::Clear();
        EXPECT_EQ(Load(bytes), ERROR_SUCCESS) << bytes;
        EXPECT_EQ(Saved(), "\"v\"=\"\xC3\xA9\xE2\x82\xAC\"\r\n") << bytes;
    }
}

TEST_F(MachineRegistryFile, DeletesWhatItIsToldTo)
{
    SetString(KEY, TEXT("keep"), TEXT("1"));
    SetString(KEY, TEXT("drop"), TEXT("1"));
    SetString(TEXT("SOFTWARE\\Other\\Below"), TEXT("v"), TEXT("1"));
    EXPECT_EQ(Load(HEADING + KEY_LINE +
                   "\"drop\"=-\n\"missing\"=-\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\n"
                   "[-HKEY_LOCAL_MACHINE\\No\\Such]"),
              ERROR_SUCCESS);
    EXPECT_EQ(Saved(), "\"keep\"=\"1\"\r\n");
}

TEST_F(MachineRegistryFile, RefusesAMalformedFileAsAWhole)
{
    const std::string line = HEADING + KEY_LINE + "\"v\"=\"new\"\n";
    const std::pair<std::string, const char*> rows[] = {
        {line + "nonsense", "line 5: neither a key nor a value"},
        {line + "\"v\"=\"open", "line 5: a text without its closing quote"},
        {line + "\"v\"=\"a\\n\"", "line 5: only \\\\ and \\\" may follow a backslash in a text"},
        {line + "\"v\"=\"a\" b", "line 5: something is left over at the end"},
        {line + "\"v\"", "line 5: an equals sign is missing behind the name"},
        {line + "\"v\"=word:1", "line 5: a value is neither a text nor dword: nor hex:"},
        {line + "\"v\"=dword:123456789", "line 5: a hexadecimal number is missing or too long"},
        {line + "\"v\"=dword:", "line 5: a hexadecimal number is missing or too long"},
        {line + "\"v\"=hex:1 2", "line 5: a comma is missing between bytes"},
        {line + "\"v\"=hex:1,\\\n\\\n100", "line 5: a hexadecimal number is missing or too long"},
        {line + "\"v\"=hex(1:1", "line 5: a parenthesis is missing behind the type"},
        {line + "\"v\"=hex(1)1", "line 5: a colon is missing before the bytes"},
        {line + "[HKEY_LOCAL_MACHINE\\Open", "line 5: a key without its closing bracket"},
        {line + "[HKEY_LOCAL_MACHINES]",
         "line 5: a key must begin with HKEY_LOCAL_MACHINE or another root of the registry"},
        {line + "[-HKEY_LOCAL_MACHINE]", "line 5: a root of the registry cannot be deleted"},
        {line + "[-HKEY_LOCAL_MACHINE\\x]\n\"v\"=\"1\"", "line 6: a value outside a key"},
        {"", "line 1: the heading of a registry file is missing"},
        {"REGEDIT5\n", "line 1: the heading of a registry file is missing"},
        {"\xFF\xFEx", "the file is UTF-16 and ends within a character"},
        {"Windows Registry Editor Version 5.00\n; \xE9", "the file is neither UTF-16 nor UTF-8"},
    };
    SetString(KEY, TEXT("v"), TEXT("old"));
    for (const auto& [bytes, szReason] : rows) {
        std::string reason;
        EXPECT_EQ(Load(bytes, &reason), ERROR_BADDB) << bytes;
        EXPECT_EQ(reason, szReason);
        EXPECT_EQ(GetValue(KEY, TEXT("v")), "\"old\"") << bytes;
    }
    EXPECT_EQ(MachineRegistry::Load(TEXT("no_such.reg")), ERROR_FILE_NOT_FOUND);
}

TEST_F(MachineRegistryFile, KeepsTheOldFileWhenItCannotWriteANewOne)
{
    EXPECT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_SUCCESS);
    const std::string saved = ReadBytes(NARROW_FILE);
    SetString(KEY, TEXT("two\nlines"), TEXT("1"));
    EXPECT_EQ(MachineRegistry::Save(FILE_NAME), ERROR_INVALID_NAME);
    EXPECT_EQ(ReadBytes(NARROW_FILE), saved);
    MachineRegistry::Clear();
    EXPECT_EQ(MachineRegistry::Save(TEXT("no\\such\\machine.reg")), ERROR_FILE_NOT_FOUND);
}

} // namespace
