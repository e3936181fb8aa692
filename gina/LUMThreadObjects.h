#pragma once

// The service threads of the host: the control channel's and the registry monitor's.

#include "LUMPipeThreadObject.h"
#include "LUMRegMonitorThreadObject.h"
