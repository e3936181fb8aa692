#include "PipeClient.h"

#include "Call.h"

namespace Native {

CPipeClient::CPipeClient(const std::string& path, DWORD dwAccess)
    : CPipeEnd(true, (dwAccess & GENERIC_READ) != 0, (dwAccess & GENERIC_WRITE) != 0),
      m_socket(PipeSocket::Connect(path))
{
    // If the server goes away before it answers, the pipe is gone with it.
    char cAnswer = 0;
    Require(PipeSocket::ReceiveByte(m_socket.Get(), cAnswer), ERROR_FILE_NOT_FOUND);
    Require(static_cast<PipeSocket::Answer>(cAnswer) == PipeSocket::Answer::Listening, ERROR_PIPE_BUSY);
}

} // namespace Native
