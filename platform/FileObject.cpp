#include "FileObject.h"

#include <cerrno>
#include <iterator>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Call.h"
#include "SystemError.h"

namespace Native {
namespace {

struct CDisposition
{
    bool bCreate;
    bool bOpen;
    bool bTruncate;
};

/// In the order of their numbers, from CREATE_NEW on.
constexpr CDisposition DISPOSITIONS[] = {
    {true, false, false}, // CREATE_NEW
    {true, true, true},   // CREATE_ALWAYS
    {false, true, false}, // OPEN_EXISTING
    {true, true, false},  // OPEN_ALWAYS
    {false, true, true},  // TRUNCATE_EXISTING
};

std::mutex g_mutex;
std::vector<const CFileObject*> g_files;

/// Whether an opener asked for any right to write.
bool Writes(DWORD dwAccess)
{
    return (dwAccess & (GENERIC_WRITE | FILE_APPEND_DATA)) != 0;
}

int GetOpenMode(DWORD dwAccess)
{
    if (dwAccess == FILE_APPEND_DATA) {
        return O_WRONLY | O_APPEND | O_CLOEXEC;
    }
    const bool bRead = (dwAccess & GENERIC_READ) != 0;
    const bool bWrite = (dwAccess & GENERIC_WRITE) != 0;
    return (bWrite ? bRead ? O_RDWR : O_WRONLY : O_RDONLY) | O_CLOEXEC;
}

/// Whether the share mode of one opener allows the access of the other.
bool AllowsAccess(DWORD dwShareMode, DWORD dwAccess)
{
    return ((dwAccess & GENERIC_READ) == 0 || (dwShareMode & FILE_SHARE_READ) != 0) &&
           (!Writes(dwAccess) || (dwShareMode & FILE_SHARE_WRITE) != 0);
}

/// Linux has one error for a missing file and a missing directory, Windows two.
[[noreturn]] void ThrowOpenError(const std::string& path, int nErrno)
{
    const std::size_t nSeparator = path.find_last_of('/');
    const bool bDirectoryIsThere =
        nSeparator == std::string::npos || access(path.substr(0, nSeparator + 1).c_str(), F_OK) == 0;
    if (nErrno == ENOENT && (path.empty() || !bDirectoryIsThere)) {
        throw CCallError{ERROR_PATH_NOT_FOUND};
    }
    throw CCallError{nErrno == EEXIST ? ERROR_FILE_EXISTS : FromErrno(nErrno)};
}

/// Repeats a transfer that a signal broke off before it began.
template <typename Transfer>
std::size_t RunTransfer(Transfer transfer)
{
    ssize_t cbMoved = -1;
    do {
        cbMoved = transfer();
    } while (cbMoved < 0 && errno == EINTR);
    Require(cbMoved >= 0, FromErrno(errno));
    return static_cast<std::size_t>(cbMoved);
}

} // namespace

CFileObject::CFileObject(const COpening& opening)
    : m_dwAccess(opening.dwAccess), m_dwShareMode(opening.dwShareMode)
{
    Require(opening.dwDisposition - 1 < std::size(DISPOSITIONS), ERROR_INVALID_PARAMETER);
    const CDisposition& disposition = DISPOSITIONS[opening.dwDisposition - 1];
    // As on Windows, truncating takes the right to write.
    Require(opening.dwDisposition != TRUNCATE_EXISTING || (m_dwAccess & GENERIC_WRITE) != 0,
            ERROR_INVALID_PARAMETER);
    Open(opening);
    try {
        Share();
        // Truncated only when it is certain that the file may be opened.
        Require(!m_bExisted || !disposition.bTruncate || truncate(opening.path.c_str(), 0) == 0,
                FromErrno(errno));
        m_bExisted = m_bExisted && disposition.bCreate;
    } catch (...) {
        Close();
        throw;
    }
}

CFileObject::~CFileObject()
{
    Close();
}

void CFileObject::Close() noexcept
{
    const std::lock_guard lock(g_mutex);
    std::erase(g_files, this);
    close(m_nFile);
}

void CFileObject::Open(const COpening& opening)
{
    const CDisposition& disposition = DISPOSITIONS[opening.dwDisposition - 1];
    const int nMode = GetOpenMode(m_dwAccess);
    if (disposition.bCreate) {
        m_nFile = open(opening.path.c_str(), nMode | O_CREAT | O_EXCL, 0666);
        m_bExisted = m_nFile < 0 && errno == EEXIST;
    }
    if (disposition.bOpen && (m_bExisted || !disposition.bCreate)) {
        m_nFile = open(opening.path.c_str(), nMode);
        m_bExisted = m_nFile >= 0;
    }
    if (m_nFile < 0) {
        ThrowOpenError(opening.path, errno);
    }
}

/// Takes part in the sharing of the file, or throws ERROR_SHARING_VIOLATION.
void CFileObject::Share()
{
    struct stat status = {};
    Require(fstat(m_nFile, &status) == 0, FromErrno(errno));
    Require(!S_ISDIR(status.st_mode), ERROR_ACCESS_DENIED);
    m_device = status.st_dev;
    m_inode = status.st_ino;
    const std::lock_guard lock(g_mutex);
    for (const CFileObject* pOther : g_files) {
        const bool bSameFile = pOther->m_device == m_device && pOther->m_inode == m_inode;
        Require(!bSameFile || (AllowsAccess(pOther->m_dwShareMode, m_dwAccess) &&
                               AllowsAccess(m_dwShareMode, pOther->m_dwAccess)),
                ERROR_SHARING_VIOLATION);
    }
    g_files.push_back(this);
}

DWORD CFileObject::Read(void* pBuffer, DWORD cbBuffer)
{
    Require((m_dwAccess & GENERIC_READ) != 0, ERROR_ACCESS_DENIED);
    return static_cast<DWORD>(RunTransfer([&] { return read(m_nFile, pBuffer, cbBuffer); }));
}

DWORD CFileObject::Write(const void* pBuffer, DWORD cbBuffer)
{
    Require(Writes(m_dwAccess), ERROR_ACCESS_DENIED);
    std::size_t cbDone = 0;
    while (cbDone < cbBuffer) {
        const char* pRest = static_cast<const char*>(pBuffer) + cbDone;
        cbDone += RunTransfer([&] { return write(m_nFile, pRest, cbBuffer - cbDone); });
    }
    return cbBuffer;
}

off_t CFileObject::Seek(off_t distance, int nOrigin) const
{
    const off_t position = lseek(m_nFile, distance, nOrigin);
    Require(position >= 0, errno == EINVAL ? ERROR_NEGATIVE_SEEK : FromErrno(errno));
    return position;
}

} // namespace Native
