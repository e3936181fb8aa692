#include "PipeDirectory.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "Call.h"
#include "SystemError.h"
#include "Text.h"

namespace Native {
namespace {

constexpr WCHAR PREFIX[] = TEXT("\\\\.\\pipe\\");
constexpr std::size_t PREFIX_LENGTH = std::size(PREFIX) - 1;

std::string GetParentDirectory()
{
    for (const char* szVariable : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
        const char* szValue = std::getenv(szVariable);
        if (szValue != nullptr && *szValue != 0) {
            return szValue;
        }
    }
    return "/tmp";
}

} // namespace

std::string GetPrivateDirectory()
{
    const std::string path = GetParentDirectory() + "/lum-pipes-" + std::to_string(getuid());
    Require(mkdir(path.c_str(), 0700) == 0 || errno == EEXIST, FromErrno(errno));
    // Somebody else may have made it first, to listen to this user's programs.
    struct stat status = {};
    Require(lstat(path.c_str(), &status) == 0, FromErrno(errno));
    Require(S_ISDIR(status.st_mode) && status.st_uid == getuid() && (status.st_mode & 077) == 0,
            ERROR_ACCESS_DENIED);
    return path;
}

bool IsPipeName(LPCWSTR szName) noexcept
{
    WCHAR szStart[PREFIX_LENGTH + 1] = {};
    for (std::size_t n = 0; n < PREFIX_LENGTH && szName[n] != 0; ++n) {
        szStart[n] = szName[n];
    }
    return CompareNoCase(szStart, PREFIX) == 0;
}

std::string GetPipePath(LPCWSTR szName)
{
    std::string name = ToUtf8(szName + PREFIX_LENGTH);
    Require(!name.empty() && name.find('\\') == std::string::npos, ERROR_INVALID_NAME);
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c == '/' ? '_' : c >= 'A' && c <= 'Z' ? char(c + 'a' - 'A') : c;
    });
    return GetPrivateDirectory() + "/" + name;
}

} // namespace Native
