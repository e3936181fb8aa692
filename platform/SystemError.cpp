#include "SystemError.h"

#include <cerrno>

namespace Native {
namespace {

struct CErrorPair
{
    int nErrno;
    DWORD dwError;
};

constexpr CErrorPair ERRORS[] = {
    {EACCES, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EIO, ERROR_IO_DEVICE},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENAMETOOLONG, ERROR_INVALID_NAME},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {ENOSPC, ERROR_DISK_FULL},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EPERM, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_ACCESS_DENIED},
};

} // namespace

DWORD FromErrno(int nErrno) noexcept
{
    for (const CErrorPair& pair : ERRORS) {
        if (pair.nErrno == nErrno) {
            return pair.dwError;
        }
    }
    return ERROR_GEN_FAILURE;
}

} // namespace Native
