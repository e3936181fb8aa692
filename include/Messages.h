#pragma once

// The message family: what every report and every failure of the system is made of.

#include "ErrorTexts.h"
#include "Exceptions.h"
#include "Message.h"
#include "TraceLog.h"
