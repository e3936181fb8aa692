#pragma once

#include "InstallSession.h"

namespace Lumctl {

/// Carries out a command, and tells the installer's log what it said. In this process: the program may be
/// gone, or not be there yet. Throws CSetupError, with what it said, when it ends with another status than 0.
void Run(const CInstallSession& session, const std::vector<WideText>& words);

} // namespace Lumctl
