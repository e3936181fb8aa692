#pragma once

#include "TestMachine.h"

/// What every program passes to the objects that it makes.
inline constexpr WCHAR TAG[] = TEXT("LUM_GINA");
inline constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");

class Contract : public CTestMachine
{
};
