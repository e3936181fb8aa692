#pragma once

// The part of Win32 that this library uses, for a system that has no Win32: with Windows' own names, values
// and error codes. Code that compiles against this compiles on Windows. There is one header for each group of
// calls; it says where the group falls short of Windows.

#include "win32/types.h"
#include "win32/errors.h"
#include "win32/eventlog.h"
#include "win32/files.h"
#include "win32/image.h"
#include "win32/library.h"
#include "win32/memory.h"
#include "win32/messages.h"
#include "win32/pipes.h"
#include "win32/registry.h"
#include "win32/resources.h"
#include "win32/sync.h"
#include "win32/text.h"
