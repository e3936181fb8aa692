#include "machine/WholeFile.h"

#include "machine/SetupError.h"
#include "machine/Text.h"

namespace {

DWORD ReadOpenFile(HANDLE hFile, std::string& bytes)
{
    char buffer[65536];
    DWORD cbRead = 0;
    do {
        if (!ReadFile(hFile, buffer, sizeof(buffer), &cbRead, nullptr)) {
            return GetLastError();
        }
        bytes.append(buffer, cbRead);
    } while (cbRead != 0);
    return ERROR_SUCCESS;
}

void Check(DWORD dwError, const char* szVerb, const std::string& path)
{
    switch (dwError) {
    case ERROR_SUCCESS:
        return;
    case ERROR_FILE_EXISTS:
        throw CSetupError(path + " exists already (--force replaces it)");
    case ERROR_NOT_SUPPORTED:
        throw CSetupError(path + " is no file");
    default:
        throw CSetupError(
            Format("cannot %s %s: error %u", szVerb, path.c_str(), static_cast<unsigned>(dwError)));
    }
}

} // namespace

DWORD LoadFile(const WideText& path, std::string& bytes)
{
    const HANDLE hFile =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    const DWORD dwError = ReadOpenFile(hFile, bytes);
    CloseHandle(hFile);
    return dwError;
}

std::string ReadWholeFile(const std::string& path)
{
    std::string bytes;
    Check(LoadFile(ToWide(path), bytes), "read", path);
    return bytes;
}

void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace)
{
    Check(StoreFile(ToWide(path), bytes, bReplace), "write", path);
}
