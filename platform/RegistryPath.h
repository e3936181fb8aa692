#pragma once

#include <vector>

#include "PlatformText.h"

namespace Platform {

/// The names in a path; doubled and trailing separators do not count.
std::vector<WideText> SplitPath(const WideText& path);

constexpr std::size_t MAX_KEY_NAME = 255;
constexpr std::size_t MAX_VALUE_NAME = 16383;

} // namespace Platform
