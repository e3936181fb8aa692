#pragma once

#include <optional>

#include "machine/Text.h"

/// The file that stands at this path after the restart, by the operations that the system has noted for it:
/// this one, or the one that replaces it; nothing when it goes. A list that cannot be read counts as empty.
/// Natively always this one. Throws std::bad_alloc only.
std::optional<WideText> FindAfterRestart(const WideText& path);
