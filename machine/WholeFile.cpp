#include "machine/WholeFile.h"

#include <cstdio>

#include "machine/SetupError.h"
#include "machine/Text.h"

namespace {

/// A file of the system, closed at the end.
class CFile
{
public:
    CFile(const std::string& path, DWORD dwAccess, DWORD dwDisposition)
        : m_hFile(CreateFileW(ToWide(path).c_str(), dwAccess, FILE_SHARE_READ, nullptr, dwDisposition,
                              FILE_ATTRIBUTE_NORMAL, nullptr))
    {
    }
    ~CFile()
    {
        if (IsOpen()) {
            CloseHandle(m_hFile);
        }
    }
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    bool IsOpen() const { return m_hFile != INVALID_HANDLE_VALUE; }

    /// Appends what is left of it.
    bool Read(std::string& bytes) const
    {
        char buffer[4096];
        DWORD cbRead = 0;
        bool bRead = false;
        while ((bRead = ReadFile(m_hFile, buffer, sizeof(buffer), &cbRead, nullptr) != FALSE) && cbRead != 0)
        {
            bytes.append(buffer, cbRead);
        }
        return bRead;
    }

    bool Write(const std::string& bytes) const
    {
        DWORD cbWritten = 0;
        return WriteFile(m_hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &cbWritten, nullptr) &&
               cbWritten == bytes.size();
    }

private:
    const HANDLE m_hFile;
};

[[noreturn]] void Fail(const char* szVerb, const std::string& path, DWORD dwError)
{
    throw CSetupError(dwError == ERROR_FILE_EXISTS ? path + " exists already (--force replaces it)"
                                                   : Format("cannot %s %s: error %u", szVerb, path.c_str(),
                                                            static_cast<unsigned>(dwError)));
}

} // namespace

std::string ReadWholeFile(const std::string& path)
{
    const CFile file(path, GENERIC_READ, OPEN_EXISTING);
    std::string bytes;
    if (!file.IsOpen() || !file.Read(bytes)) {
        Fail("read", path, GetLastError());
    }
    return bytes;
}

void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace)
{
    DWORD dwError = ERROR_SUCCESS;
    {
        const CFile file(path, GENERIC_WRITE, bReplace ? CREATE_ALWAYS : CREATE_NEW);
        if (!file.IsOpen()) {
            Fail("write", path, GetLastError());
        }
        dwError = file.Write(bytes) ? ERROR_SUCCESS : GetLastError();
    }
    if (dwError != ERROR_SUCCESS || ReadWholeFile(path) != bytes) {
        std::remove(path.c_str());
        Fail("write", path, dwError);
    }
}
