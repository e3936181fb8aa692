#include "machine/Text.h"
#include "machine/WholeFile.h"

namespace {

DWORD WriteOpenFile(HANDLE hFile, const std::string& bytes)
{
    DWORD cbWritten = 0;
    if (GetFileType(hFile) != FILE_TYPE_DISK) {
        return ERROR_NOT_SUPPORTED;
    }
    if (!WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr) ||
        !FlushFileBuffers(hFile))
    {
        return GetLastError();
    }
    return cbWritten == bytes.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

DWORD WriteNewFile(const std::basic_string<WCHAR>& path, const std::string& bytes)
{
    const HANDLE hFile =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    const DWORD dwError = WriteOpenFile(hFile, bytes);
    CloseHandle(hFile);
    return dwError;
}

} // namespace

DWORD StoreFile(const std::basic_string<WCHAR>& path, const std::string& bytes, bool bReplace)
{
    const std::basic_string<WCHAR> newPath =
        path + ToWide(Format(".%u", static_cast<unsigned>(GetCurrentProcessId())));
    DWORD dwError = WriteNewFile(newPath, bytes);
    if (dwError != ERROR_SUCCESS) {
        if (dwError != ERROR_FILE_EXISTS) {
            DeleteFileW(newPath.c_str());
        }
        return dwError;
    }
    const DWORD dwFlags = MOVEFILE_WRITE_THROUGH | (bReplace ? MOVEFILE_REPLACE_EXISTING : 0);
    if (!MoveFileExW(newPath.c_str(), path.c_str(), dwFlags)) {
        dwError = GetLastError();
        DeleteFileW(newPath.c_str());
    }
    return dwError == ERROR_ALREADY_EXISTS ? ERROR_FILE_EXISTS : dwError;
}
