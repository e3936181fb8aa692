#pragma once

#include <string>

#include <sys/types.h>

#include "ByteObject.h"

namespace Native {

/// An open file. The operations throw CCallError.
class CFileObject : public CByteObject
{
public:
    /// What CreateFileW was asked for.
    struct COpening
    {
        std::string path;
        DWORD dwAccess;
        DWORD dwShareMode;
        DWORD dwDisposition;
    };

    explicit CFileObject(const COpening& opening);
    ~CFileObject() override;

    /// Whether CREATE_ALWAYS or OPEN_ALWAYS found a file.
    bool HasExisted() const noexcept { return m_bExisted; }

    DWORD Read(void* pBuffer, DWORD cbBuffer) override;
    DWORD Write(const void* pBuffer, DWORD cbBuffer) override;
    off_t Seek(off_t distance, int nOrigin) const;

private:
    void Open(const COpening& opening);
    void Share();
    void Close() noexcept;

    int m_nFile = -1;
    DWORD m_dwAccess;
    DWORD m_dwShareMode;
    bool m_bExisted = false;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

} // namespace Native
