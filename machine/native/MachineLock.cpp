#include "machine/MachineLock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "machine/Text.h"
#include "platform/SystemError.h"
#include "platform/Text.h"

namespace {

/// Whether this is still the file of that name: other programs replace it.
bool IsNamed(int nFile, const std::string& path)
{
    struct stat locked;
    struct stat named;
    return fstat(nFile, &locked) == 0 && stat(path.c_str(), &named) == 0 && locked.st_ino == named.st_ino &&
           locked.st_dev == named.st_dev;
}

} // namespace

CMachineLock::~CMachineLock()
{
    if (m_nLock >= 0) {
        close(static_cast<int>(m_nLock));
    }
}

bool CMachineLock::IsOn(const std::string& path) const
{
    return m_nLock >= 0 && IsNamed(static_cast<int>(m_nLock), Native::ToPath(ToWide(path).c_str()));
}

DWORD CMachineLock::Take(const std::string& registry)
{
    if (registry.empty()) {
        return ERROR_SUCCESS;
    }
    const std::string path = Native::ToPath(ToWide(registry).c_str());
    const int nFile = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0) {
        // The one who reads the file reports that it is missing.
        return errno == ENOENT ? ERROR_SUCCESS : Native::FromErrno(errno);
    }
    if (flock(nFile, LOCK_EX | LOCK_NB) != 0 || !IsNamed(nFile, path)) {
        close(nFile);
        return ERROR_SHARING_VIOLATION;
    }
    m_nLock = nFile;
    return ERROR_SUCCESS;
}
