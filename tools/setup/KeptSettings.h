#pragma once

#include <string>

#include "KeyValues.h"

/// What the package keeps in the registry from an installation to the removal: the library's settings as they
/// were found and as they were left, and notes of what was done to the chain. These throw CSetupError.

/// Keeps the settings that there are. Nothing must be kept yet.
void KeepSettings();

/// Keeps the settings as the installation leaves them.
void KeepSettingsLeft();

/// Makes those settings that the installation changed what they were before, unless they have been changed
/// since, and keeps nothing any more. bInChain: leaves the GINA behind the library as it is.
void TakeSettingsBack(bool bInChain);

/// A note by its name; no data for none. Setting one makes the place for it.
std::optional<CKeyValue> FindNote(const WideText& name);
void SetNote(const WideText& name, const std::optional<CKeyValue>& value);
