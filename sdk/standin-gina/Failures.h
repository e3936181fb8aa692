#pragma once

#include "StandinGina.h"

/// Whether this system knows that kind of failure.
bool CanFail(StandinFailure failure);

/// Fails in that way; returns only for None. dwCode is the code of a structured exception.
void Fail(StandinFailure failure, DWORD dwCode);
