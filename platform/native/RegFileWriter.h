#pragma once

#include <string>

#include "RegistryTree.h"

namespace Native {

/// The text of a .reg file with everything below the key that is not volatile. False when a name has a
/// control character in it.
bool WriteRegFile(const CTreeKey& root, WideText& text);

} // namespace Native
