#include "PipeMachine.h"

// Clients that do not keep to the protocol cost their own request, and nobody else's.

namespace {

using HostileClients = CPipeMachine;

constexpr DWORD FOR_EVER = 600000;
constexpr DWORD PROMPT_MILLISECONDS = 2000;

/// The shortest request that has a field of every length: its code, a counted name and a byte.
std::string AnyRequest()
{
    return "\x72" + Counted("nobody.dll") + std::string(1, '\0');
}

TEST_F(HostileClients, MayGoAtAnyByteOrSendTooMuch)
{
    StartServer();
    const std::string request = AnyRequest();
    for (std::size_t nCut = 0; nCut <= request.size(); ++nCut) {
        CRawClient().Send(request.substr(0, nCut));
    }
    EXPECT_EQ(Exchange(request + std::string(2000, 'x')), "00");
    ExpectService("all that");
}

TEST_F(HostileClients, MayGoBeforeTheyAreServed)
{
    SetTraceMask(LEVEL_DEBUG);
    CRawClient().Close();
    StartServer();
    ExpectLine("[DEBUG] Could not connect to pipe, error 0xe8");
    ExpectService("one that has gone");
}

TEST_F(HostileClients, MayStallAtAnyByte)
{
    SetTraceMask(LEVEL_EXCEPTION);
    StartServer({20, 20});
    const std::string request = AnyRequest();
    for (std::size_t nCut = 0; nCut < request.size(); ++nCut) {
        EXPECT_EQ(Exchange(request.substr(0, nCut)), "") << "byte " << nCut;
    }
    StopServer();
    EXPECT_EQ(Count("[EXCEPTION] ReadFile function call failed, Error: 0x5b4"),
              static_cast<int>(request.size()));
}

TEST_F(HostileClients, MayNeverRead)
{
    // Time enough for the client that behaves, also on a machine that is emulated.
    StartServer({5000, 500});
    CRawClient silent;
    silent.Send("\x75");
    const DWORD dwStart = GetTickCount();
    ExpectService("a client that does not read");
    EXPECT_GE(GetTickCount() - dwStart, 400u) << "it has had its time";
}

TEST_F(HostileClients, ThatDoNotHangUpAreDisconnectedOnceTheyHaveRead)
{
    StartServer({FOR_EVER, FOR_EVER});
    // A client may wait for more than there is, or take it byte by byte.
    for (const DWORD cbPiece : {1, 64}) {
        CRawClient late;
        const DWORD dwStart = GetTickCount();
        late.Send("\x66");
        Sleep(100);
        EXPECT_EQ(late.Receive(cbPiece).size(), 64u) << "what it has not read is not taken from it";
        EXPECT_LT(GetTickCount() - dwStart, PROMPT_MILLISECONDS);
    }
}

TEST_F(HostileClients, DoNotHoldUpAStop)
{
    SetTraceMask(LEVEL_NOTIFICATION | LEVEL_EXCEPTION);
    StartServer({FOR_EVER, FOR_EVER});
    CRawClient stalled;
    stalled.Send("\x68");
    ExpectLine("[NOTIFICATION] Received request: LUM_IS_GINA_IN_PLUGIN_LIST");
    StopServer();
    ExpectLine("[EXCEPTION] ReadFile function call failed, Error: 0x3e3");
    stalled.Close();

    StartServer({FOR_EVER, FOR_EVER});
    CRawClient silent;
    silent.Send("\x75");
    ExpectLine("[NOTIFICATION] Received request: LUM_VERIFY_LUM_GINA");
    StopServer();
}

} // namespace
