#pragma once

#include <string>
#include <vector>

/// One line of the library's trace log, as far as it tells of operations and plugins.
struct CTraceLine
{
    /// "ENTRY", "EXIT", "CONSTRUCTION EXIT", "WARNING"...
    std::string level;
    /// Of an operation; otherwise operation holds the whole message.
    std::string className;
    std::string operation;
    /// Behind "Return: " and "Plugin: "; empty when the line has none.
    std::string result;
    std::string plugin;
};

/// Reads what is added to a trace log, whoever adds it.
class CTraceTail
{
public:
    /// Empty for no log. What is in it already is not looked at.
    explicit CTraceTail(const std::string& path);

    /// The complete lines that were added since the last time.
    std::vector<CTraceLine> Read();

private:
    std::string m_path;
    long m_nPosition = 0;
};

/// Takes a line of the log apart.
CTraceLine ParseTraceLine(const std::string& line);
