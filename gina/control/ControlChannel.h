#pragma once

#include <windows.h>

/// The way by which one request comes in and its reply goes out: a client at the other end of a byte stream.
class CControlChannel
{
public:
    /// Fills the buffer, or throws CReadFileException.
    virtual void Read(void* pBuffer, DWORD cbBuffer) = 0;

    /// Writes all of the buffer, or throws CWriteFileException.
    virtual void Write(const void* pBuffer, DWORD cbBuffer) = 0;

    /// Makes the thread impersonate the client. False, with a warning, when that fails.
    virtual bool Impersonate() noexcept = 0;

protected:
    ~CControlChannel() = default;
};
