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
    /// What comes until the server disconnects, in hexadecimal digits: "00", "" for nothing; at most
    /// cbMost bytes.
    std::string Receive(DWORD cbMost = 4096);
    DWORD CountAvailable();
    void Close();

private:
    HANDLE m_hPipe;
};

/// Sends bytes, reads as many digits as a reply should have and any more that came with them, and hangs up.
/// For no digits it waits until the server hangs up.
std::string Exchange(const std::string& bytes, std::size_t nDigits = 2);

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
