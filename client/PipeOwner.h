#pragma once

#include <windows.h>

/// Whether the open pipe belongs to the system, to the administrators or to the user who runs this program.
/// Any other program that took the name of the pipe first could act as whoever sends to it. Natively pipes
/// lie in a folder of the user's own, and all do.
bool IsPipeOfTrustedOwner(HANDLE hPipe) noexcept;
