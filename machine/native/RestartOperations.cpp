#include "machine/RestartOperations.h"

/// No restart changes files here.
std::optional<WideText> FindAfterRestart(const WideText& path)
{
    return path;
}
