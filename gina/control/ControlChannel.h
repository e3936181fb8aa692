#pragma once

#include <windows.h>

/// What one request comes through and goes out by: a client at the other end of a stream of bytes.
class CControlChannel
{
public:
    /// Fills the buffer, or throws CReadFileException.
    virtual void Read(void* pBuffer, DWORD cbBuffer) = 0;

    /// Writes all of the buffer, or throws CWriteFileException.
    virtual void Write(const void* pBuffer, DWORD cbBuffer) = 0;

    /// Gives the thread the identity of the client. False, and a warning, when that cannot be done.
    virtual bool Impersonate() noexcept = 0;

protected:
    ~CControlChannel() = default;
};
