#pragma once

#include "PlatformText.h"

namespace Native {

using namespace Platform;

/// A path as this system has it: UTF-8, with '/'.
std::string ToPath(LPCWSTR szPath);

} // namespace Native
