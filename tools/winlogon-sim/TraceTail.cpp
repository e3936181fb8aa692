#include "TraceTail.h"

#include <cstdio>
#include <memory>

namespace {

struct CFileCloser
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};
using File = std::unique_ptr<std::FILE, CFileCloser>;

/// What follows szLabel, up to the next comma; empty when it is not there.
std::string TakeDetail(const std::string& text, const std::string& label)
{
    const std::size_t nLabel = text.find(", " + label);
    if (nLabel == std::string::npos) {
        return "";
    }
    const std::size_t nBegin = nLabel + 2 + label.size();
    return text.substr(nBegin, text.find(", ", nBegin) - nBegin);
}

} // namespace

CTraceTail::CTraceTail(const std::string& path) : m_path(path)
{
    const File pFile(std::fopen(path.c_str(), "rb"));
    if (pFile != nullptr && std::fseek(pFile.get(), 0, SEEK_END) == 0) {
        m_nPosition = std::ftell(pFile.get());
    }
}

std::vector<CTraceLine> CTraceTail::Read()
{
    const File pFile(m_path.empty() ? nullptr : std::fopen(m_path.c_str(), "rb"));
    std::string text;
    if (pFile != nullptr && std::fseek(pFile.get(), m_nPosition, SEEK_SET) == 0) {
        char buffer[4096];
        while (const std::size_t cbRead = std::fread(buffer, 1, sizeof(buffer), pFile.get())) {
            text.append(buffer, cbRead);
        }
    }
    std::vector<CTraceLine> lines;
    std::size_t nBegin = 0;
    for (std::size_t nEnd = text.find('\n'); nEnd != std::string::npos; nEnd = text.find('\n', nBegin)) {
        lines.push_back(ParseTraceLine(text.substr(nBegin, nEnd - nBegin)));
        nBegin = nEnd + 1;
    }
    m_nPosition += static_cast<long>(nBegin);
    return lines;
}

CTraceLine ParseTraceLine(const std::string& line)
{
    const std::size_t nLevel = line.find('[');
    const std::size_t nEnd = line.find("] ", nLevel);
    if (nLevel == std::string::npos || nEnd == std::string::npos) {
        return {};
    }
    CTraceLine parsed;
    parsed.level = line.substr(nLevel + 1, nEnd - nLevel - 1);
    parsed.level.erase(parsed.level.find_last_not_of(' ') + 1);
    const std::string text = line.substr(nEnd + 2);
    parsed.result = TakeDetail(text, "Return: ");
    parsed.plugin = TakeDetail(text, "Plugin: ");
    parsed.operation = text.substr(0, text.find(", "));
    if (const std::size_t nColons = parsed.operation.find("::"); nColons != std::string::npos) {
        parsed.className = parsed.operation.substr(0, nColons);
        parsed.operation.erase(0, nColons + 2);
    }
    return parsed;
}
