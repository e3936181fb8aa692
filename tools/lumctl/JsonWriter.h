#pragma once

#include <string>

#include "machine/Text.h"

/// Writes one JSON text, indented, in plain ASCII: other characters are escaped, so that no code page
/// matters.
class CJsonWriter
{
public:
    /// Appends to output.
    explicit CJsonWriter(std::string& output) : m_output(output) {}

    // A name is given within an object, null within an array and for the text as a whole.
    void BeginObject(const char* szName = nullptr) { Begin(szName, '{'); }
    void BeginArray(const char* szName = nullptr) { Begin(szName, '['); }
    void EndObject() { End('}'); }
    void EndArray() { End(']'); }

    void Text(const char* szName, const WideText& text);
    void Text(const char* szName, const std::string& text) { Text(szName, ToWide(text)); }
    void Bool(const char* szName, bool bValue) { Plain(szName, bValue ? "true" : "false"); }
    void Number(const char* szName, long nValue) { Plain(szName, std::to_string(nValue)); }
    void Null(const char* szName) { Plain(szName, "null"); }

private:
    void Begin(const char* szName, char chOpen);
    void End(char chClose);
    void Plain(const char* szName, const std::string& value);
    void BreakLine();

    std::string& m_output;
    std::size_t m_nDepth = 0;
    bool m_bFirst = true;
};
