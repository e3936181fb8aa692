#include "machine/WholeFile.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/SystemError.h"
#include "platform/Text.h"

namespace {

/// The path of the file itself when the name is that of a link.
std::string Resolve(const std::string& path)
{
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

bool WriteAll(int nFile, const std::string& bytes)
{
    std::size_t nDone = 0;
    while (nDone < bytes.size()) {
        const ssize_t nWritten = write(nFile, bytes.data() + nDone, bytes.size() - nDone);
        if (nWritten <= 0) {
            return false;
        }
        nDone += static_cast<std::size_t>(nWritten);
    }
    return true;
}

/// Gives the new file the mode of the one that it replaces, or that of any new file.
bool SetMode(int nFile, const struct stat* pOld)
{
    if (pOld != nullptr) {
        // Only root may give a file to another owner, so this may fail.
        static_cast<void>(fchown(nFile, pOld->st_uid, pOld->st_gid) == 0);
        return fchmod(nFile, pOld->st_mode & 07777) == 0;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return fchmod(nFile, 0666 & ~mask) == 0;
}

/// 0, or why the new file could not be put in its place.
int Put(const std::string& newPath, const std::string& path, bool bReplace)
{
    const int nResult =
        bReplace ? rename(newPath.c_str(), path.c_str()) : link(newPath.c_str(), path.c_str());
    return nResult == 0 ? 0 : errno;
}

} // namespace

DWORD StoreFile(const std::basic_string<WCHAR>& widePath, const std::string& bytes, bool bReplace)
{
    const std::string path = Resolve(Native::ToPath(widePath.c_str()));
    struct stat old;
    const bool bOld = stat(path.c_str(), &old) == 0;
    if (bOld && !S_ISREG(old.st_mode)) {
        return ERROR_NOT_SUPPORTED;
    }
    if (bOld && !bReplace) {
        return ERROR_FILE_EXISTS;
    }
    std::string newPath = path + ".XXXXXX";
    const int nFile = mkostemp(newPath.data(), O_CLOEXEC);
    if (nFile < 0) {
        return Native::FromErrno(errno);
    }
    int nError =
        WriteAll(nFile, bytes) && SetMode(nFile, bOld ? &old : nullptr) && fsync(nFile) == 0 ? 0 : errno;
    close(nFile);
    if (nError == 0) {
        nError = Put(newPath, path, bReplace);
    }
    unlink(newPath.c_str());
    return nError == EEXIST ? ERROR_FILE_EXISTS : nError == 0 ? ERROR_SUCCESS : Native::FromErrno(nError);
}
