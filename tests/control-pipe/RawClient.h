#pragma once

#include <string>
#include <vector>

#include <windows.h>

/// A client that does not care for the protocol.
class CRawClient
{
public:
    /// Waits until the pipe takes it; a test whose server never does has failed already.
    CRawClient();
    ~CRawClient() { Close(); }
    CRawClient(const CRawClient&) = delete;
    CRawClient& operator=(const CRawClient&) = delete;

    void Send(const std::string& bytes);
    /// Waits for what comes, cbPiece bytes at a time, until the server disconnects; in hexadecimal digits:
    /// "00", "" for nothing.
    std::string Receive(DWORD cbPiece = 64);
    void Close();

private:
    HANDLE m_hPipe;
};

/// Sends bytes, and gives what comes until the server disconnects.
std::string Exchange(const std::string& bytes);

/// A request whose bytes are put together by hand, so that the tests do not depend on the client library.
std::string Number(DWORD dwValue);
std::string Counted(const std::string& name);
std::string Fixed(const std::string& name);
/// A record with pointers that lead nowhere.
std::string Record();

struct CRequestExample
{
    const char* szName;
    std::string bytes;
    /// The operation that carries it out, as it traces itself; "" when there is none.
    const char* szOperation;
    /// The reply, with "v" for a byte of a version.
    std::string reply;
};

/// One of each request, for a machine as CPipeMachine has it.
std::vector<CRequestExample> GetRequestExamples();
