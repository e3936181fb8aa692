#include "JsonWriter.h"

namespace {

std::string Escape(WCHAR ch)
{
    if (ch == '"' || ch == '\\') {
        return {'\\', static_cast<char>(ch)};
    }
    return ch >= ' ' && ch < 0x7F ? std::string(1, static_cast<char>(ch))
                                  : Format("\\u%04x", static_cast<unsigned>(ch));
}

} // namespace

void CJsonWriter::Text(const char* szName, const WideText& text)
{
    std::string quoted = "\"";
    for (const WCHAR ch : text) {
        quoted += Escape(ch);
    }
    Plain(szName, quoted + '"');
}

void CJsonWriter::Plain(const char* szName, const std::string& value)
{
    if (m_nDepth != 0) {
        m_output += m_bFirst ? "" : ",";
        BreakLine();
    }
    m_bFirst = false;
    if (szName != nullptr) {
        m_output += Format("\"%s\": ", szName);
    }
    m_output += value;
}

void CJsonWriter::Begin(const char* szName, char chOpen)
{
    Plain(szName, std::string(1, chOpen));
    ++m_nDepth;
    m_bFirst = true;
}

void CJsonWriter::End(char chClose)
{
    --m_nDepth;
    if (!m_bFirst) {
        BreakLine();
    }
    m_output += chClose;
    m_bFirst = false;
    if (m_nDepth == 0) {
        m_output += '\n';
    }
}

void CJsonWriter::BreakLine()
{
    m_output += '\n' + std::string(2 * m_nDepth, ' ');
}
