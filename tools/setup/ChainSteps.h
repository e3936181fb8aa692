#pragma once

#include "InstallSession.h"

/// The package's changes of the chain of GINAs. One that takes another back may run weeks later, when the
/// rollback was interrupted: the library may be in service by then, and others may have changed the chain.
/// All throw CSetupError and CCommandError.
namespace ChainSteps {

/// To be called when the settings have been kept and nothing has been changed.
void BeginInstall();
/// Backs the chain up into a new file, and puts the library into it.
void Enable(const CInstallSession& session, const WideText& backup);
/// Takes the library out of a chain in which it was not when the installation began. Throws when the chain is
/// not what it was then; the machine starts all the same.
void TakeEnableBack(const CInstallSession& session, const WideText& backup);

/// Takes the library out of the chain.
void Disable(const CInstallSession& session);
void TakeDisableBack(const CInstallSession& session);

/// Takes the library out of the chain, by all means, if the next start cannot load it.
void EnsureStart(const CInstallSession& session);

/// Whether the chain could not be made what it was: the backup is needed to put it right by hand.
bool IsBackupNeeded();

/// Whether the chain names the library, as far as it can be followed.
bool IsInChain();
/// The same, or it cannot be followed to its end.
bool MayBeInChain();

} // namespace ChainSteps
