#include "machine/RegFile.h"

#include <algorithm>
#include <iterator>

#include "RegFileLineReader.h"
#include "platform/RegistryPath.h"

namespace Platform {
namespace {

const WCHAR* const ROOTS[] = {MACHINE_ROOT, TEXT("HKEY_USERS"), TEXT("HKEY_CURRENT_USER"),
                              TEXT("HKEY_CLASSES_ROOT"), TEXT("HKEY_CURRENT_CONFIG")};
constexpr char NO_ROOT[] = "a key must begin with HKEY_LOCAL_MACHINE or another root of the registry";

std::vector<BYTE> CopyBytes(const void* pData, std::size_t cbData)
{
    const auto* pBytes = static_cast<const BYTE*>(pData);
    return {pBytes, pBytes + cbData};
}

CRegistryData MakeText(const WideText& text)
{
    return {REG_SZ, CopyBytes(text.c_str(), (text.size() + 1) * sizeof(WCHAR))};
}

CRegistryData MakeDword(DWORD dwNumber)
{
    return {REG_DWORD, CopyBytes(&dwNumber, sizeof(dwNumber))};
}

std::vector<BYTE> TakeBytes(CRegFileLineReader& reader)
{
    std::vector<BYTE> bytes;
    reader.SkipBlanks();
    while (!reader.AtEnd()) {
        bytes.push_back(static_cast<BYTE>(reader.TakeHex(2)));
        reader.SkipBlanks();
        if (!reader.AtEnd()) {
            reader.Expect(TEXT(","), "a comma is missing between bytes");
            reader.SkipBlanks();
        }
    }
    return bytes;
}

/// The older format has the bytes of texts in the ANSI code page.
std::vector<BYTE> WidenBytes(const std::vector<BYTE>& bytes)
{
    const WideText text = FromAnsi(std::string(bytes.begin(), bytes.end()));
    return CopyBytes(text.data(), text.size() * sizeof(WCHAR));
}

class CParser
{
public:
    explicit CParser(const CRegFileText& text) : m_bOldFormat(text.bOldFormat)
    {
        for (const CRegFileLine& line : text.lines) {
            CRegFileLineReader reader(line);
            if (reader.Take(TEXT("["))) {
                ParseKey(reader);
            } else {
                ParseValue(reader);
            }
        }
    }

    std::vector<CRegFileChange> m_changes;

private:
    void ParseKey(CRegFileLineReader& reader)
    {
        CRegFileChange change;
        change.bDelete = reader.Take(TEXT("-"));
        const auto root = std::find_if(std::begin(ROOTS), std::end(ROOTS),
                                       [&](const WCHAR* szRoot) { return reader.Take(szRoot); });
        if (root == std::end(ROOTS)) {
            reader.Fail(NO_ROOT);
        }
        m_root = change.root = *root;
        WideText path = reader.TakeRest();
        if (path.empty() || path.back() != ']') {
            reader.Fail("a key without its closing bracket");
        }
        path.pop_back();
        if (!path.empty() && path.front() != '\\') {
            reader.Fail(NO_ROOT);
        }
        change.key = SplitPath(path);
        CheckKey(reader, change);
        m_pKey = change.bDelete ? std::nullopt : std::optional(change.key);
        m_changes.push_back(std::move(change));
    }

    static void CheckKey(const CRegFileLineReader& reader, const CRegFileChange& change)
    {
        if (change.bDelete && change.key.empty()) {
            reader.Fail("a root of the registry cannot be deleted");
        }
        for (const WideText& name : change.key) {
            if (name.size() > MAX_KEY_NAME) {
                reader.Fail("the name of a key is too long");
            }
        }
    }

    void ParseValue(CRegFileLineReader& reader)
    {
        CRegFileChange change;
        change.value = WideText();
        if (!reader.Take(TEXT("@"))) {
            reader.Expect(TEXT("\""), "neither a key nor a value");
            change.value = reader.TakeQuoted();
        }
        if (!m_pKey) {
            reader.Fail("a value outside a key");
        }
        if (change.value->size() > MAX_VALUE_NAME) {
            reader.Fail("the name of a value is too long");
        }
        change.root = m_root;
        change.key = *m_pKey;
        reader.SkipBlanks();
        reader.Expect(TEXT("="), "an equals sign is missing behind the name");
        reader.SkipBlanks();
        change.bDelete = reader.Take(TEXT("-"));
        if (!change.bDelete) {
            change.data = ParseData(reader);
        }
        reader.ExpectEnd();
        m_changes.push_back(std::move(change));
    }

    CRegistryData ParseData(CRegFileLineReader& reader) const
    {
        if (reader.Take(TEXT("\""))) {
            return MakeText(reader.TakeQuoted());
        }
        if (reader.Take(TEXT("dword:"))) {
            reader.SkipBlanks();
            return MakeDword(reader.TakeHex(8));
        }
        CRegistryData data = {REG_BINARY, {}};
        reader.Expect(TEXT("hex"), "a value is neither a text nor dword: nor hex:");
        if (reader.Take(TEXT("("))) {
            data.dwType = reader.TakeHex(8);
            reader.Expect(TEXT(")"), "a parenthesis is missing behind the type");
        }
        reader.Expect(TEXT(":"), "a colon is missing before the bytes");
        data.bytes = TakeBytes(reader);
        const bool bText =
            data.dwType == REG_SZ || data.dwType == REG_EXPAND_SZ || data.dwType == REG_MULTI_SZ;
        if (m_bOldFormat && bText) {
            data.bytes = WidenBytes(data.bytes);
        }
        return data;
    }

    bool m_bOldFormat;
    WideText m_root;
    std::optional<std::vector<WideText>> m_pKey;
};

} // namespace

std::vector<CRegFileChange> ParseRegFile(const std::string& bytes)
{
    return std::move(CParser(ReadRegFileText(bytes)).m_changes);
}

} // namespace Platform
