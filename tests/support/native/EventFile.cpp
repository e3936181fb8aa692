#include "EventFile.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <unistd.h>

namespace {

std::string GetPath()
{
    const char* szFolder = std::getenv("XDG_RUNTIME_DIR");
    return std::string(szFolder != nullptr ? szFolder : "/tmp") + "/lum-pipes-" + std::to_string(getuid()) +
           "/events.log";
}

} // namespace

Lines ReadEvents()
{
    Lines lines;
    std::istringstream text(ReadBytes(GetPath()));
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

void ForgetEvents()
{
    std::remove(GetPath().c_str());
}
