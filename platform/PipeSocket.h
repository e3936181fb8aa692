#pragma once

#include <string>

#include "ByteObject.h"

namespace Native {

/// A file descriptor that is closed with its owner.
class CDescriptor
{
public:
    explicit CDescriptor(int nDescriptor = -1) noexcept : m_nDescriptor(nDescriptor) {}
    ~CDescriptor() { Reset(); }
    CDescriptor(CDescriptor&& other) noexcept : m_nDescriptor(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }

    int Get() const noexcept { return m_nDescriptor; }
    bool IsOpen() const noexcept { return m_nDescriptor >= 0; }
    void Reset(int nDescriptor = -1) noexcept;

private:
    int Release() noexcept;

    int m_nDescriptor;
};

/// What both ends of a pipe do with the socket between them. The operations throw CCallError. If the other
/// end is gone: with ERROR_BROKEN_PIPE, on writing with ERROR_NO_DATA.
namespace PipeSocket {

/// What a client that connects is told.
enum class Answer : char
{
    Listening,
    Busy,
};

/// A socket to a path of any length; ERROR_FILE_NOT_FOUND for a client when nobody listens there.
CDescriptor Listen(const std::string& path);
CDescriptor Connect(const std::string& path);

/// One byte, with a limited wait.
bool SendByte(int nSocket, char cByte) noexcept;
bool ReceiveByte(int nSocket, char& cByte) noexcept;

/// ERROR_NO_DATA when there is nothing to read and bWait is false.
DWORD Read(int nSocket, void* pBuffer, DWORD cbBuffer, bool bWait);
DWORD Write(int nSocket, const void* pBuffer, DWORD cbBuffer);
/// Copies at most cbBuffer bytes, and returns how many could be read.
DWORD Peek(int nSocket, void* pBuffer, DWORD cbBuffer);
/// Whether the other end has yet to read something that was written.
bool HasUnread(int nSocket);
/// Whether the other end is closed, even if something that it wrote is still unread.
bool IsPeerGone(int nSocket) noexcept;

} // namespace PipeSocket

/// An end of a pipe, with what both ends have in common.
class CPipeEnd : public CByteObject
{
public:
    DWORD Read(void* pBuffer, DWORD cbBuffer) override;
    DWORD Write(const void* pBuffer, DWORD cbBuffer) override;
    DWORD Peek(void* pBuffer, DWORD cbBuffer);
    void SetWait(bool bWait) noexcept { m_bWait = bWait; }

protected:
    CPipeEnd(bool bWait, bool bMayRead, bool bMayWrite) noexcept
        : m_bWait(bWait), m_bMayRead(bMayRead), m_bMayWrite(bMayWrite)
    {
    }

    /// The socket; throws when there is nobody at the other end.
    virtual int GetSocket() = 0;

    bool m_bWait;
    bool m_bHasRead = false;

private:
    const bool m_bMayRead;
    const bool m_bMayWrite;
};

} // namespace Native
