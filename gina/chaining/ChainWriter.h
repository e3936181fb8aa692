#pragma once

#include "GinaLists.h"

class CWinlogonRegistry;

/// Writes the chain to the registry, first to last: Winlogon's GinaDLL names the first GINA, and each GINA's
/// passthrough value the one after it. That of the last gets its default. An empty chain leaves Winlogon
/// without a GinaDLL. What cannot be written is reported, and the rest is written all the same.
void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry);
