#include <algorithm>

#include "PipeMachine.h"

// Clients that do not keep to the protocol cost their own request, and nobody else's.

namespace {

using HostileClients = CPipeMachine;

/// Where to break a request off: everywhere in the beginning, here and there in long names.
std::vector<std::size_t> GetCuts(const std::string& bytes)
{
    std::vector<std::size_t> cuts;
    for (std::size_t n = 0; n < bytes.size(); n += n < 50 || n + 4 > bytes.size() ? 1 : 37) {
        cuts.push_back(n);
    }
    return cuts;
}

TEST_F(HostileClients, MayGoAtAnyByte)
{
    StartServer();
    for (const CRequestExample& example : GetRequestExamples()) {
        for (const std::size_t nCut : GetCuts(example.bytes)) {
            CRawClient client;
            client.Send(example.bytes.substr(0, nCut));
        }
        ExpectService(example.szName);
    }
}

TEST_F(HostileClients, MayStallAtAnyByte)
{
    StartServer({20, 20});
    for (const CRequestExample& example : GetRequestExamples()) {
        for (const std::size_t nCut : GetCuts(example.bytes)) {
            CRawClient client;
            client.Send(example.bytes.substr(0, nCut));
            EXPECT_EQ(client.Receive(), "") << example.szName << ", byte " << nCut;
        }
    }
    StopServer();
    ExpectLine("[EXCEPTION] ReadFile function call failed, Error: 0x5b4");
    StartServer();
    ExpectService("clients that stall");
}

TEST_F(HostileClients, MayNeverRead)
{
    // Time enough for the client that behaves, also on a machine that is emulated.
    StartServer({5000, 500});
    std::vector<std::unique_ptr<CRawClient>> clients;
    for (const CRequestExample& example : GetRequestExamples()) {
        clients.push_back(std::make_unique<CRawClient>());
        clients.back()->Send(example.bytes);
        ExpectService(example.szName);
    }
}

TEST_F(HostileClients, MayGoWithoutReadingOrSendTooMuch)
{
    StartServer();
    for (const CRequestExample& example : GetRequestExamples()) {
        CRawClient().Send(example.bytes);
        CRawClient talkative;
        talkative.Send(example.bytes + std::string(2000, 'x'));
        EXPECT_EQ(talkative.Receive(1).size(), 2u) << example.szName;
    }
    ExpectService("all that");
}

TEST_F(HostileClients, MayBeMany)
{
    StartServer();
    for (int n = 0; n < 100; ++n) {
        ExpectService(std::to_string(n) + " others");
    }
}

TEST_F(HostileClients, DoNotHoldUpAStop)
{
    SetTraceMask(LEVEL_NOTIFICATION | LEVEL_EXCEPTION);
    StartServer({600000, 600000});
    CRawClient stalled;
    stalled.Send("\x68");
    ExpectLine("[NOTIFICATION] Received request: LUM_IS_GINA_IN_PLUGIN_LIST");
    StopServer();
    ExpectLine("[EXCEPTION] ReadFile function call failed, Error: 0x3e3");
    stalled.Close();

    StartServer({600000, 600000});
    CRawClient silent;
    silent.Send("\x75");
    EXPECT_EQ(silent.Receive(1), "00");
    StopServer();
}

} // namespace
