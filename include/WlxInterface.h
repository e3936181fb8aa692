#pragma once

#include <windows.h>

// The compiler's header declares the entry points as C++ functions; what Winlogon looks up has plain names.
extern "C" {
#include <winwlx.h>
}
