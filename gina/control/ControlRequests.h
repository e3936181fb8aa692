#pragma once

#include "ControlChannel.h"

class CLUMGina;
class CLUMObject;

/// Those that requests are carried out by.
struct CControlTargets
{
    CLUMObject& object;
    CLUMGina& gina;
};

/// Reads one request from the channel, carries it out under the identity of the client, and replies. Except
/// for what anybody may ask, nothing is carried out for a client without one. Throws what the channel throws,
/// and CMemAllocException for a name that there is no room for; no reply has been written then. The thread
/// is left with the identity of the client.
void ServeRequest(CControlChannel& channel, const CControlTargets& targets);
