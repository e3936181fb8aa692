#pragma once

#include <windows.h>

// The compiler's header declares the entry points as C++ functions; Winlogon looks up plain names.
extern "C" {
#include <winwlx.h>
}
