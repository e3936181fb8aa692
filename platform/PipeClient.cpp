#include "PipeClient.h"

#include "Call.h"

namespace Native {

CPipeClient::CPipeClient(const std::string& path, DWORD dwAccess)
    : CPipeEnd(true, (dwAccess & GENERIC_READ) != 0, (dwAccess & GENERIC_WRITE) != 0),
      m_socket(PipeSocket::Connect(path))
{
    // A server that goes away before it answers has taken the name with it.
    char cAnswer = 0;
    Require(PipeSocket::ReceiveByte(m_socket.Get(), cAnswer), ERROR_FILE_NOT_FOUND);
    Require(static_cast<PipeSocket::Answer>(cAnswer) == PipeSocket::Answer::Listening, ERROR_PIPE_BUSY);
}

} // namespace Native
