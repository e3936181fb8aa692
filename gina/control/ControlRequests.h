#pragma once

#include "ControlChannel.h"

class CLUMGina;
class CLUMObject;

/// The objects that carry requests out.
struct CControlTargets
{
    CLUMObject& object;
    CLUMGina& gina;
};

/// Reads one request from the channel, carries it out while impersonating the client, and replies. If
/// impersonation fails, only requests that anyone may make are carried out. Throws what the channel throws,
/// and CMemAllocException for a name that is too long; then there has been no reply. The thread still
/// impersonates the client afterwards.
void ServeRequest(CControlChannel& channel, const CControlTargets& targets);
