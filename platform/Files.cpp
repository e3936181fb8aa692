#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

#include <windows.h>

#include "Call.h"
#include "FileObject.h"
#include "LibrarySearch.h"
#include "PipeClient.h"
#include "PipeDirectory.h"
#include "SystemError.h"
#include "Text.h"

using namespace Native;

namespace {

std::shared_ptr<CFileObject> GetFile(HANDLE hFile)
{
    std::shared_ptr<CFileObject> pFile = HandleTable::Find<CFileObject>(hFile);
    Require(pFile != nullptr, ERROR_INVALID_HANDLE);
    return pFile;
}

/// A FILETIME counts in units of 100 ns from 1601 on.
std::uint64_t ToFileTime(const timespec& time)
{
    constexpr std::int64_t SECONDS_TO_1970 = 11'644'473'600;
    return static_cast<std::uint64_t>(time.tv_sec + SECONDS_TO_1970) * 10'000'000 +
           static_cast<std::uint64_t>(time.tv_nsec) / 100;
}

/// What reading and writing have in common.
template <typename Move>
BOOL Transfer(PlatformCall call, HANDLE hFile, LPDWORD pcbMoved, LPOVERLAPPED pOverlapped, Move move) noexcept
{
    const std::shared_ptr<CByteObject> pObject = HandleTable::Find<CByteObject>(hFile);
    return LastErrorCall(call, pObject != nullptr ? pObject->GetName() : nullptr, FALSE, [&] {
        Require(pOverlapped == nullptr, ERROR_NOT_SUPPORTED);
        Require(pcbMoved != nullptr, ERROR_NOACCESS);
        *pcbMoved = 0;
        Require(pObject != nullptr, ERROR_INVALID_HANDLE);
        *pcbMoved = move(*pObject);
        return TRUE;
    });
}

HANDLE OpenPipe(LPCWSTR szName, DWORD dwAccess, DWORD dwDisposition)
{
    Require(dwDisposition == OPEN_EXISTING, ERROR_INVALID_PARAMETER);
    return HandleTable::Add(std::make_shared<CPipeClient>(GetPipePath(szName), dwAccess));
}

} // namespace

BOOL WINAPI CreateDirectoryW(LPCWSTR szPath, LPSECURITY_ATTRIBUTES) noexcept
{
    return LastErrorCall(PlatformCall::CreateDirectoryW, szPath, FALSE, [&] {
        Require(szPath != nullptr && *szPath != 0, ERROR_PATH_NOT_FOUND);
        if (mkdir(ToPath(szPath).c_str(), 0777) != 0) {
            throw CCallError{errno == ENOENT ? ERROR_PATH_NOT_FOUND : FromErrno(errno)};
        }
        return TRUE;
    });
}

HANDLE WINAPI CreateFileW(LPCWSTR szPath, DWORD dwAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES,
                          DWORD dwDisposition, DWORD, HANDLE) noexcept
{
    return LastErrorCall(PlatformCall::CreateFileW, szPath, INVALID_HANDLE_VALUE, [&] {
        Require(szPath != nullptr, ERROR_PATH_NOT_FOUND);
        if (IsPipeName(szPath)) {
            return OpenPipe(szPath, dwAccess, dwDisposition);
        }
        const std::string path = ToPath(szPath);
        Require(!path.ends_with('/'), ERROR_INVALID_NAME);
        const auto pFile =
            std::make_shared<CFileObject>(CFileObject::COpening{path, dwAccess, dwShareMode, dwDisposition});
        const HANDLE hFile = HandleTable::Add(pFile);
        // This call sets the last error also when it succeeds.
        SetLastError(pFile->HasExisted() ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
        return hFile;
    });
}

BOOL WINAPI GetFileAttributesExW(LPCWSTR szPath, GET_FILEEX_INFO_LEVELS, LPVOID pInfo) noexcept
{
    return LastErrorCall(PlatformCall::GetFileAttributesExW, szPath, FALSE, [&] {
        struct stat file = {};
        if (stat(ToPath(szPath).c_str(), &file) != 0) {
            throw CCallError{FromErrno(errno)};
        }
        const std::uint64_t size = static_cast<std::uint64_t>(file.st_size);
        const std::uint64_t written = ToFileTime(file.st_mtim);
        WIN32_FILE_ATTRIBUTE_DATA& info = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(pInfo);
        info = {};
        info.dwFileAttributes = S_ISDIR(file.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
        info.ftLastWriteTime = {static_cast<DWORD>(written), static_cast<DWORD>(written >> 32)};
        info.nFileSizeHigh = static_cast<DWORD>(size >> 32);
        info.nFileSizeLow = static_cast<DWORD>(size);
        return TRUE;
    });
}

DWORD WINAPI SearchPathW(LPCWSTR, LPCWSTR szFile, LPCWSTR, DWORD cchBuffer, LPWSTR szBuffer, LPWSTR*) noexcept
{
    return LastErrorCall(PlatformCall::SearchPathW, szFile, DWORD(0), [&] {
        WideText path;
        Require(FromUtf8(FindLibraryFile(szFile, WideText()), path) && !path.empty(), ERROR_FILE_NOT_FOUND);
        if (path.size() >= cchBuffer) {
            return static_cast<DWORD>(path.size() + 1);
        }
        *std::copy(path.begin(), path.end(), szBuffer) = 0;
        return static_cast<DWORD>(path.size());
    });
}

DWORD WINAPI SetFilePointer(HANDLE hFile, LONG lDistance, PLONG plDistanceHigh, DWORD dwMethod) noexcept
{
    return LastErrorCall(PlatformCall::SetFilePointer, nullptr, INVALID_SET_FILE_POINTER, [&] {
        static constexpr int ORIGINS[] = {SEEK_SET, SEEK_CUR, SEEK_END};
        Require(dwMethod < std::size(ORIGINS), ERROR_INVALID_PARAMETER);
        off_t distance = lDistance;
        if (plDistanceHigh != nullptr) {
            distance = static_cast<off_t>(*plDistanceHigh) * 0x100000000 + static_cast<DWORD>(lDistance);
        }
        const off_t position = GetFile(hFile)->Seek(distance, ORIGINS[dwMethod]);
        if (plDistanceHigh != nullptr) {
            *plDistanceHigh = static_cast<LONG>(position >> 32);
        }
        if (static_cast<DWORD>(position) == INVALID_SET_FILE_POINTER) {
            // This position looks like the failure value.
            SetLastError(ERROR_SUCCESS);
        }
        return static_cast<DWORD>(position);
    });
}

BOOL WINAPI ReadFile(HANDLE hFile, LPVOID pBuffer, DWORD cbBuffer, LPDWORD pcbRead,
                     LPOVERLAPPED pOverlapped) noexcept
{
    return Transfer(PlatformCall::ReadFile, hFile, pcbRead, pOverlapped,
                    [&](CByteObject& object) { return object.Read(pBuffer, cbBuffer); });
}

BOOL WINAPI WriteFile(HANDLE hFile, LPCVOID pBuffer, DWORD cbBuffer, LPDWORD pcbWritten,
                      LPOVERLAPPED pOverlapped) noexcept
{
    return Transfer(PlatformCall::WriteFile, hFile, pcbWritten, pOverlapped,
                    [&](CByteObject& object) { return object.Write(pBuffer, cbBuffer); });
}
