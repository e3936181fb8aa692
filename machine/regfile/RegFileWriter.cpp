#include "machine/RegFile.h"

#include <algorithm>
#include <cstring>

#include "platform/PlatformText.h"

namespace Platform {
namespace {

constexpr std::size_t BYTES_IN_A_LINE = 25;

bool HasControls(const WideText& text)
{
    return std::any_of(text.begin(), text.end(), [](WCHAR ch) { return ch < ' '; });
}

WideText Quote(const WideText& text)
{
    WideText quoted = TEXT("\"");
    for (const WCHAR ch : text) {
        if (ch == '\\' || ch == '"') {
            quoted += '\\';
        }
        quoted += ch;
    }
    return quoted + TEXT("\"");
}

WideText ToHex(DWORD dwNumber, int nDigits)
{
    WideText text;
    for (int nShift = 4 * (nDigits - 1); nShift >= 0; nShift -= 4) {
        text += static_cast<WCHAR>("0123456789abcdef"[dwNumber >> nShift & 0xF]);
    }
    return text;
}

/// Whether the data is a terminated text and nothing else, and can stand between quotes.
bool IsPlainText(const CRegistryData& data, WideText& text)
{
    if (data.dwType != REG_SZ || data.bytes.empty() || data.bytes.size() % sizeof(WCHAR) != 0) {
        return false;
    }
    text.resize(data.bytes.size() / sizeof(WCHAR));
    std::memcpy(text.data(), data.bytes.data(), data.bytes.size());
    const bool bTerminated = text.back() == 0;
    text.pop_back();
    return bTerminated && !HasControls(text);
}

WideText WriteBytes(const CRegistryData& data)
{
    WideText text = TEXT("hex");
    if (data.dwType != REG_BINARY) {
        text += TEXT("(");
        text += ToHex(data.dwType, data.dwType < 0x10 ? 1 : 8);
        text += TEXT(")");
    }
    text += TEXT(":");
    for (std::size_t i = 0; i < data.bytes.size(); ++i) {
        if (i != 0) {
            text += i % BYTES_IN_A_LINE == 0 ? TEXT(",\\\r\n  ") : TEXT(",");
        }
        text += ToHex(data.bytes[i], 2);
    }
    return text;
}

WideText WriteData(const CRegistryData& data)
{
    WideText text;
    if (IsPlainText(data, text)) {
        return Quote(text);
    }
    DWORD dwNumber = 0;
    if (data.dwType == REG_DWORD && data.bytes.size() == sizeof(dwNumber)) {
        std::memcpy(&dwNumber, data.bytes.data(), sizeof(dwNumber));
        return TEXT("dword:") + ToHex(dwNumber, 8);
    }
    return WriteBytes(data);
}

} // namespace

CRegFileWriter::CRegFileWriter() : m_text(TEXT("Windows Registry Editor Version 5.00\r\n")) {}

bool CRegFileWriter::AddKey(const WideText& path, const WideText& root)
{
    m_text += TEXT("\r\n[") + root;
    m_text += (path.empty() ? WideText() : TEXT("\\") + path) + TEXT("]\r\n");
    return !HasControls(path);
}

bool CRegFileWriter::AddValue(const WideText& name, const CRegistryData* pData)
{
    m_text += (name.empty() ? WideText(TEXT("@")) : Quote(name)) + TEXT("=");
    m_text += (pData != nullptr ? WriteData(*pData) : WideText(TEXT("-"))) + TEXT("\r\n");
    return !HasControls(name);
}

void CRegFileWriter::AddComment(const WideText& text)
{
    m_text += TEXT("\r\n; ") + text + TEXT("\r\n");
}

std::string CRegFileWriter::GetBytes() const
{
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(m_text.data()), m_text.size() * sizeof(WCHAR));
    return bytes;
}

} // namespace Platform
