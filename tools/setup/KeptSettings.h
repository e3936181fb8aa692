#pragma once

#include "registry/ChainValues.h"

// What the package keeps in the registry from an installation to the removal: the library's settings as they
// were found and as they were left, and notes of what was done to the chain. These throw CSetupError and
// CCommandError.

bool IsAnythingKept();

/// Keeps the settings that there are. Nothing must be kept yet.
void KeepSettings();

/// Keeps the settings as the installation leaves them.
void KeepSettingsLeft();

/// Restores each setting that the installation changed and nobody has changed since, deletes the notes of
/// safe start if there were none, and keeps nothing any more. bInChain: the library stays in the chain, and
/// so do its notes and the GINA behind it.
void TakeSettingsBack(bool bInChain);

/// A note by its name; no data for none. Setting one makes the place for it, and brings it to the disk.
CValueData FindNote(const WCHAR* szName);
void SetNote(const WCHAR* szName, const CValueData& data);
