#include "Text.h"

#include <algorithm>

std::string Native::ToPath(LPCWSTR szPath)
{
    std::string path = ToUtf8(szPath);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}
