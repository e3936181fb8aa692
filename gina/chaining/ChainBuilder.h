#pragma once

#include "GinaLists.h"

class CWinlogonRegistry;

/// Follows the chain of GINAs through the registry: from Winlogon's GinaDLL through each GINA's passthrough
/// value to a GINA that ends it. Builds into chain, which is empty, and adds chaining records that are needed
/// on the way to knownGinas. bNoRepair: write nothing; otherwise a passthrough value that is missing is
/// written. Whether the chain could be followed to its end; an empty one has reached it. Reports what is
/// wrong with it. Throws when there is no memory.
bool BuildChain(CKnownGinaList& knownGinas, CGinaChain& chain, CWinlogonRegistry& winlogonRegistry,
                bool bNoRepair);
