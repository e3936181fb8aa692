#pragma once

#include <windows.h>

/// Whether the open pipe belongs to the system or to the administrators. Any other program that took the name
/// of the pipe first could act as whoever sends to it. Where one user has everything that runs, under Wine
/// and natively, that user's are trusted too.
bool IsPipeOfTrustedOwner(HANDLE hPipe) noexcept;
