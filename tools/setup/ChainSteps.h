#pragma once

#include "InstallSession.h"

/// The package's changes of the chain of GINAs. One that takes another back may run weeks later, when the
/// rollback was interrupted: the library may be in service by then, and others may have changed the chain.
/// All throw CSetupError and CCommandError.
namespace ChainSteps {

/// Backs the chain up into a new file, and puts the library into it.
void Enable(const CInstallSession& session, const WideText& backup);
/// Throws when the backup could not be restored. The library is out of the chain all the same, and the
/// machine starts; the backup is needed to put the rest right by hand.
void TakeEnableBack(const CInstallSession& session, const WideText& backup);

/// Takes the library out of the chain.
void Disable(const CInstallSession& session);
void TakeDisableBack(const CInstallSession& session);

/// Takes the library out of the chain, by all means, if the next start cannot load it.
void EnsureStart(const CInstallSession& session);

/// Whether the chain names the library, or cannot be followed to its end.
bool MayBeInChain();

} // namespace ChainSteps
