#pragma once

#include "InstallSession.h"

/// What the package does to the chain of GINAs. One that takes another back may run long after it, when the
/// machine was switched off in between: by then the library may be in service, and others may have changed
/// the chain. These throw CSetupError and CCommandError.
namespace ChainSteps {

/// Backs the chain up into a new file, and puts the library into it.
void Enable(const CInstallSession& session, const WideText& backup);
/// When this fails, the machine starts, and the backup is still needed: the chain is another one than it was.
void TakeEnableBack(const CInstallSession& session, const WideText& backup);

/// Takes the library out of the chain.
void Disable(const CInstallSession& session);
void TakeDisableBack(const CInstallSession& session);

/// Takes the library out of the chain by all means if the next start cannot load it.
void Guard(const CInstallSession& session);

/// Whether the chain may name the library.
bool MayBeInChain();

} // namespace ChainSteps
