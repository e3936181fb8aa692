#pragma once

#include "GinaLists.h"

class CWinlogonRegistry;

/// Follows the chain of GINAs through the registry: from Winlogon's GinaDLL through each GINA's passthrough
/// value to a GINA that ends it. Fills chain, which must be empty, and adds the chaining records that it
/// needs to knownGinas. bNoRepair: write nothing; otherwise missing passthrough values are written. Returns
/// whether the chain could be followed to its end; true for an empty one. Reports what is wrong with it.
/// Throws when there is no memory.
bool BuildChain(CKnownGinaList& knownGinas, CGinaChain& chain, CWinlogonRegistry& winlogonRegistry,
                bool bNoRepair);
