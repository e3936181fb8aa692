#include "PipeClient.h"

#include "Call.h"

namespace Native {
namespace {

/// A server that goes away before it answers has taken the name with it.
PipeSocket::Answer Ask(const CDescriptor& socket, PipeSocket::Purpose purpose)
{
    char cAnswer = 0;
    Require(PipeSocket::SendByte(socket.Get(), static_cast<char>(purpose)) &&
                PipeSocket::ReceiveByte(socket.Get(), cAnswer),
            ERROR_FILE_NOT_FOUND);
    return static_cast<PipeSocket::Answer>(cAnswer);
}

} // namespace

CPipeClient::CPipeClient(const std::string& path, DWORD dwAccess)
    : CPipeEnd(true, (dwAccess & GENERIC_READ) != 0, (dwAccess & GENERIC_WRITE) != 0),
      m_socket(PipeSocket::Connect(path))
{
    Require(Ask(m_socket, PipeSocket::Purpose::Open) == PipeSocket::Answer::Listening, ERROR_PIPE_BUSY);
}

bool CPipeClient::IsListening(const std::string& path)
{
    const CDescriptor socket = PipeSocket::Connect(path);
    return Ask(socket, PipeSocket::Purpose::Ask) == PipeSocket::Answer::Listening;
}

} // namespace Native
