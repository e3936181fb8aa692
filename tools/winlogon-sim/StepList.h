#pragma once

/// Prints the steps that a day can hold, with what can be set in each.
void PrintSteps();
