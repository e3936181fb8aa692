#pragma once

#include "PipeSocket.h"

namespace Native {

/// The client's end of a pipe.
class CPipeClient : public CPipeEnd
{
public:
    /// ERROR_PIPE_BUSY when the instance does not listen.
    CPipeClient(const std::string& path, DWORD dwAccess);

protected:
    int GetSocket() override { return m_socket.Get(); }

private:
    CDescriptor m_socket;
};

} // namespace Native
