#pragma once

// The registry value classes, through which all configuration is read and written.

#include "RegistryDword.h"
#include "RegistryKey.h"
#include "RegistryString.h"
#include "RegistryValue.h"
